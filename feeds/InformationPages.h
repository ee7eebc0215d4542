#pragma once

namespace vantro {

class PageDisplay;

// The program's own pages. Return at once: what becomes of the page is the display's to say.
void ShowAboutPage(PageDisplay& display);
void ShowHelpPage(PageDisplay& display);
void ShowDonationsPage(PageDisplay& display);

} // namespace vantro
