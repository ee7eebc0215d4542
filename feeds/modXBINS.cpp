#include "feeds/SiteCheck.h"
#include "feeds/Sites.h"

#include <string_view>

namespace vantro {

namespace {

constexpr SiteField kFields[]
    = {{"title", "Title"}, {"link", "Link"}, {"homepage", "Homepage"}, {"releasedate", "Releasedate"}};

// "Link" is the address of the release's NFO file.
constexpr PageField kPageFields[] = {{"Title"}, {"Link"}, {"Homepage"}, {"Releasedate", true}};

constexpr Replacement kTitle[] = {
    {"[TITLE]", PageValue::Stored, "Title"},
    {"[NFO TEXT]", PageValue::Stored, "Link"},
    {"%5BNFO%20LINK%5D", PageValue::Stored, "Link"},
    {"[NFO TARGET]", PageValue::MainFrame},
    {"[HOMEPAGE TEXT]", PageValue::Stored, "Homepage"},
    {"%5BHOMEPAGE%20LINK%5D", PageValue::Stored, "Homepage"},
    {"[HOMEPAGE TARGET]", PageValue::ExternalTarget},
    {"[RELEASE DATE]", PageValue::Stored, "Releasedate"},
    {"xbins-logo.gif", PageValue::FileOf, "xbins-logo.gif"},
};

constexpr SavedResource kSaved[] = {{"xbins-logo.gif", "LOGO"}, {"xbins-frames.htm", "FRAMES"}};
constexpr FilledTemplate kFilled[] = {{"xbins-main.htm", "MAIN", {}}, {"xbins-title.htm", "TITLE", kTitle}};
constexpr std::string_view kDeleted[]
    = {"xbins-frames.htm", "xbins-title.htm", "xbins-main.htm", "xbins-logo.gif"};

constexpr Option kAutoNfo{"Xbins Auto NFO", OptionKind::OnOff, "chkXbinsAutoNFO", 7, "Auto display NFO link",
    {240, 240, 1815, 255}};
constexpr Option kExternal{"Xbins External Page", OptionKind::OnOff, "chkXbinsExternalPage", 8,
    "Open author/product homepage in external browser", {240, 480, 3975, 255}};
constexpr Option kOptions[] = {kAutoNfo, kExternal};

constexpr PageRecipe kPage{
    .resourceType = "XBINS",
    .saved = kSaved,
    .filled = kFilled,
    .shown = "xbins-frames.htm",
    .deleted = kDeleted,
    .fields = kPageFields,
    .externalOption = &kExternal,
    .externalPrefix = "_XbinsExternal",
    .emptyLink = "http://www.xbins.example/",
    .autoLinkOption = &kAutoNfo,
};

} // namespace

constexpr Site modXBINS{
    .identifier = "XBINS",
    .prefix = "xbin",
    .displayName = "Xbins",
    .image = TreeImage::Site,
    .rootPlace = 3,
    .host = "http://www.xbins.example",
    .feedPath = "/xbins.xml",
    .strip = 0,
    .taken = kFields,
    .stored = kFields,
    .page = &kPage,
    .optionFrame = {"Frame3", 855, kOptions},
};
static_assert(IsConsistent(modXBINS));

} // namespace vantro
