#include "feeds/modXBOXSCENE.h"

namespace vantro {

namespace {

constexpr SiteField kFields[] = {{"title", "Title"}, {"link", "Link"}};

constexpr PageField kPageFields[] = {{"Title"}, {"Link"}};

constexpr Replacement kMain[] = {{"xboxscene-bgnd.gif", PageValue::FileOf, "xboxscene-bgnd.gif"}};
constexpr Replacement kTitle[] = {
    {"[TITLE]", PageValue::Stored, "Title"},
    {"[LINK TEXT]", PageValue::Stored, "Link"},
    {"[LINK TARGET]", PageValue::ExternalTarget, "XboxScene External"},
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

constexpr PageRecipe kPage{
    .resourceType = "XBOXSCENE",
    .saved = kSaved,
    .filled = kFilled,
    .shown = "xboxscene-frames.htm",
    .deleted = kDeleted,
    .fields = kPageFields,
    .externalPrefix = "_XboxSceneExternal",
};

constexpr Site kSite{"XBOXSCENE", "xbsc", "Xbox-Scene", TreeImage::XboxScene, kFields, kFields, &kPage};

} // namespace

constinit const SiteModule modXBOXSCENE(kSite);

} // namespace vantro
