#pragma once

namespace vantro {

class PageDisplay;

// The program's own pages.
void ShowAboutPage(PageDisplay& display);
void ShowHelpPage(PageDisplay& display);
void ShowDonationsPage(PageDisplay& display);

} // namespace vantro
