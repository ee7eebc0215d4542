#include "feeds/SiteCheck.h"
#include "feeds/Sites.h"

#include <string_view>

namespace vantro {

namespace {

constexpr SiteField kFields[] = {{"title", "Title"}, {"link", "Link"}, {"description", "Description"}};

constexpr PageField kPageFields[] = {{"Title"}, {"Link"}, {"Description"}};

constexpr Replacement kMain[] = {{"[DESCRIPTION]", PageValue::Stored, "Description"}};
constexpr Replacement kTitle[] = {
    {"[TITLE]", PageValue::Stored, "Title"},
    {"[LINK TEXT]", PageValue::Stored, "Link"},
    {"%5BLINK%5D", PageValue::Stored, "Link"},
    {"[LINK TARGET]", PageValue::ExternalTarget},
    {"maxconsole-logo.jpg", PageValue::FileOf, "maxconsole-logo.jpg"},
};

constexpr SavedResource kSaved[] = {{"maxconsole-logo.jpg", "LOGO"}, {"maxconsole-frames.htm", "FRAMES"}};
constexpr FilledTemplate kFilled[]
    = {{"maxconsole-main.htm", "MAIN", kMain}, {"maxconsole-title.htm", "TITLE", kTitle}};
constexpr std::string_view kDeleted[]
    = {"maxconsole-frames.htm", "maxconsole-title.htm", "maxconsole-main.htm", "maxconsole-logo.jpg"};

constexpr Option kExternal{"Max Console External", OptionKind::OnOff, "chkMaxConsoleExternalPage", 10,
    "Open news in external browser", {240, 240, 2535, 255}};
constexpr Option kOptions[] = {kExternal};

constexpr PageRecipe kPage{
    .resourceType = "MAXCONSOLE",
    .saved = kSaved,
    .filled = kFilled,
    .shown = "maxconsole-frames.htm",
    .deleted = kDeleted,
    .fields = kPageFields,
    .externalOption = &kExternal,
    .externalPrefix = "_XboxSceneExternal", // shared with Xbox-Scene, so both open the same window for item n
};

} // namespace

constexpr Site modMAXCONSOLE{
    .identifier = "MAXCONSOLE",
    .prefix = "maxc",
    .displayName = "Max Console",
    .image = TreeImage::Site,
    .rootPlace = 2,
    .host = "http://www.maxconsole.example",
    .feedPath = "/rss/xboxfeed.rss",
    .strip = 2,
    .taken = kFields,
    .stored = kFields,
    .page = &kPage,
    .optionFrame = {"Frame5", 735, kOptions},
};
static_assert(IsConsistent(modMAXCONSOLE));

} // namespace vantro
