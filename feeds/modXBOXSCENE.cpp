#include "feeds/SiteCheck.h"
#include "feeds/Sites.h"

#include <string_view>

namespace vantro {

namespace {

constexpr SiteField kFields[] = {{"title", "Title"}, {"link", "Link"}};

constexpr PageField kPageFields[] = {{"Title"}, {"Link"}};

constexpr Replacement kMain[] = {{"xboxscene-bgnd.gif", PageValue::FileOf, "xboxscene-bgnd.gif"}};
constexpr Replacement kTitle[] = {
    {"[TITLE]", PageValue::Stored, "Title"},
    {"[LINK TEXT]", PageValue::Stored, "Link"},
    {"[LINK TARGET]", PageValue::ExternalTarget},
    {"%5BLINK%5D", PageValue::Stored, "Link"},
    {"xboxscene-logo.jpg", PageValue::FileOf, "xboxscene-logo.jpg"},
    {"xboxscene-bgnd.gif", PageValue::FileOf, "xboxscene-bgnd.gif"},
};

constexpr SavedResource kSaved[] = {
    {"xboxscene-bgnd.gif", "BACKGROUND"}, {"xboxscene-logo.jpg", "LOGO"}, {"xboxscene-frames.htm", "FRAMES"}};
constexpr FilledTemplate kFilled[]
    = {{"xboxscene-main.htm", "MAIN", kMain}, {"xboxscene-title.htm", "TITLE", kTitle}};
constexpr std::string_view kDeleted[] = {"xboxscene-frames.htm", "xboxscene-title.htm", "xboxscene-main.htm",
    "xboxscene-logo.jpg", "xboxscene-bgnd.gif"};

constexpr Option kExternal{"XboxScene External", OptionKind::OnOff, "chkXboxSceneExternalPage", 9,
    "Open news in external browser", {240, 240, 2535, 255}};
constexpr Option kOptions[] = {kExternal};

constexpr PageRecipe kPage{
    .resourceType = "XBOXSCENE",
    .saved = kSaved,
    .filled = kFilled,
    .shown = "xboxscene-frames.htm",
    .deleted = kDeleted,
    .fields = kPageFields,
    .externalOption = &kExternal,
    .externalPrefix = "_XboxSceneExternal",
};

} // namespace

constexpr Site modXBOXSCENE{
    .identifier = "XBOXSCENE",
    .prefix = "xbsc",
    .displayName = "Xbox-Scene",
    .image = TreeImage::XboxScene,
    .rootPlace = 1,
    .host = "http://www.xbox-scene.example",
    .feedPath = "/xbox1data/xbox-scene.xml",
    .strip = 1,
    .taken = kFields,
    .stored = kFields,
    .page = &kPage,
    .optionFrame = {"Frame4", 855, kOptions},
};
static_assert(IsConsistent(modXBOXSCENE));

} // namespace vantro
