#include "feeds/InformationPages.h"

#include "feeds/PageDisplay.h"
#include "feeds/SiteCheck.h"

#include <string_view>

namespace vantro {

namespace {

constexpr Replacement kVersion[] = {{"[VERSION]", PageValue::Version}, {"%5BVERSION%5D", PageValue::Version}};

constexpr SavedResource kAboutSaved[]
    = {{"newspaper.gif", "ABOUT-NEWSPAPER"}, {"vantro.jpg", "ABOUT-LOGO"}, {"xbox-x.jpg", "ABOUT-XBOX-X"}};
constexpr FilledTemplate kAboutFilled[] = {{"vantro.htm", "ABOUT-MAIN", kVersion}};
constexpr std::string_view kAboutDeleted[] = {"newspaper.gif", "vantro.jpg", "xbox-x.jpg", "vantro.htm"};
constexpr PageRecipe kAbout{"VANTRO", kAboutSaved, kAboutFilled, "vantro.htm", kAboutDeleted};

constexpr SavedResource kHelpSaved[] = {{"newspaper.gif", "ABOUT-NEWSPAPER"}, {"vantro.jpg", "ABOUT-LOGO"},
    {"xbox-x.jpg", "ABOUT-XBOX-X"}, {"menu.gif", "MENU"}, {"settings.gif", "SETTINGS"}};
constexpr FilledTemplate kHelpFilled[] = {{"help.htm", "HELP", kVersion}};
constexpr std::string_view kHelpDeleted[]
    = {"newspaper.gif", "vantro.jpg", "xbox-x.jpg", "help.htm", "menu.gif", "settings.gif"};
constexpr PageRecipe kHelp{"VANTRO", kHelpSaved, kHelpFilled, "help.htm", kHelpDeleted};

constexpr SavedResource kDonationsSaved[]
    = {{"newspaper.gif", "ABOUT-NEWSPAPER"}, {"vantro.jpg", "ABOUT-LOGO"}, {"xbox-x.jpg", "ABOUT-XBOX-X"},
        {"paypal.gif", "PAYPAL"}, {"nochex.gif", "NOCHEX"}};
constexpr FilledTemplate kDonationsFilled[] = {{"donations.htm", "DONATIONS", kVersion}};
constexpr std::string_view kDonationsDeleted[]
    = {"newspaper.gif", "vantro.jpg", "xbox-x.jpg", "donations.htm", "paypal.gif", "nochex.gif"};
constexpr PageRecipe kDonations{
    "VANTRO", kDonationsSaved, kDonationsFilled, "donations.htm", kDonationsDeleted};

static_assert(IsConsistent(kAbout) && IsConsistent(kHelp) && IsConsistent(kDonations));

} // namespace

void ShowAboutPage(PageDisplay& display)
{
    display.ShowInformationPage(kAbout);
}
void ShowHelpPage(PageDisplay& display)
{
    display.ShowInformationPage(kHelp);
}
void ShowDonationsPage(PageDisplay& display)
{
    display.ShowInformationPage(kDonations);
}

} // namespace vantro
