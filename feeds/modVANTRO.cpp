#include "base/modMain.h"
#include "feeds/SiteCheck.h"
#include "feeds/Sites.h"

#include <optional>
#include <string_view>

namespace vantro {

namespace {

constexpr SiteField kTaken[] = {{"title", "Title"}, {"link", "Link"}, {"homepage", "Homepage"},
    {"date", "Date"}, {"description", "Description"}};
constexpr SiteField kStored[] = {{"title", "Title"}, {"link", "Link"}, {"homepage", "Homepage"},
    {"description", "Description"}, {"date", "Date"}};

constexpr PageField kPageFields[] = {{"Title"}, {"Link"}, {"Homepage"}, {"Description"}, {"date", true}};

constexpr Replacement kMain[] = {{"[DESCRIPTION]", PageValue::Stored, "Description"}};
constexpr Replacement kTitle[] = {
    {"[VERSION]", PageValue::Version},
    {"%5BVERSION%5D", PageValue::Version},
    {"[TITLE]", PageValue::Stored, "Title"},
    {"[LINK]", PageValue::Stored, "Link"},
    {"%5BLINK%5D", PageValue::Stored, "Link"},
    {"[LINK TARGET]", PageValue::MainFrame},
    {"[HOMEPAGE]", PageValue::Stored, "Homepage"},
    {"%5BHOMEPAGE%20LINK%5D", PageValue::Stored, "Homepage"},
    {"[HOMEPAGE TARGET]", PageValue::MainFrame},
    {"[DATE]", PageValue::Stored, "date"},
    {"vantro.jpg", PageValue::FileOf, "vantro.jpg"},
};

constexpr SavedResource kSaved[] = {{"vantro.jpg", "ABOUT-LOGO"}, {"vantro-frames.htm", "FRAMES"}};
constexpr FilledTemplate kFilled[]
    = {{"vantro-main.htm", "MAIN", kMain}, {"vantro-title.htm", "TITLE", kTitle}};
constexpr std::string_view kDeleted[]
    = {"vantro-frames.htm", "vantro-title.htm", "vantro-main.htm", "vantro.jpg"};

constexpr PageRecipe kPage{
    .resourceType = "VANTRO",
    .saved = kSaved,
    .filled = kFilled,
    .shown = "vantro-frames.htm",
    .deleted = kDeleted,
    .fields = kPageFields,
};

} // namespace

constexpr Site modVANTRO{
    .identifier = "VANTRO",
    .prefix = "vant",
    .displayName = ProductName,
    .image = TreeImage::Vantro,
    .rootPlace = 0,
    .host = "http://www.vantro.example",
    .feedPath = "/vantro/vantro.xml",
    .strip = std::nullopt,
    .taken = kTaken,
    .stored = kStored,
    .page = &kPage,
};
static_assert(IsConsistent(modVANTRO));

} // namespace vantro
