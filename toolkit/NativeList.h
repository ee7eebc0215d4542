#pragma once

#include <optional>

class wxDataViewCtrl;

namespace vantro {

// What the window library does not offer of the native list below its wxDataViewCtrl.

// Scroll bars that stay, in place of ones that show under the pointer only.
void ShowScrollBars(wxDataViewCtrl& list);

// The toolkit's own search by letters would take the focus, and leave the list without a selection.
void SwitchOffSearch(wxDataViewCtrl& list);

// The arrows of branches are black but on the selected row, whatever the theme: for branches with a light
// background, of which it does not know.
void DrawArrowsBlack(wxDataViewCtrl& list);

// The list of one column becomes as wide as its widest row again, which takes a moment. Of itself it only
// grows.
void FitWidth(wxDataViewCtrl& list);

// Shows the text of a row in a tooltip where a part of it is out of sight to the left or right. The list has
// one column.
void ShowCutTextsInTooltips(wxDataViewCtrl& list);

// A row by its place: a root, or one of a root's children.
struct ListRow {
    int root = 0;
    std::optional<int> child = {};
};

// Puts the keyboard's cursor on the row and scrolls as little as shows it. Right when the rows are measured,
// as for ScrollTo(). In a list of single selection the window library's SetCurrentItem() only selects.
void MoveCursor(wxDataViewCtrl& list, const ListRow& row);

// Pixels of the first visible row that are scrolled out of sight.
[[nodiscard]] int HiddenPartOfTopRow(wxDataViewCtrl& list);
// Makes `row` the first visible one, as far as the list reaches, before the list is painted next.
void ScrollTo(wxDataViewCtrl& list, const ListRow& row);
// The same at once, with `hidden` pixels of the row out of sight. Right when the toolkit has measured the
// rows, as it has when it is idle.
void ScrollTo(wxDataViewCtrl& list, const ListRow& row, int hidden);

} // namespace vantro
