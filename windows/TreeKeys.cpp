#include "windows/TreeKeys.h"

#include "base/Words.h"
#include "shell/TreeClicks.h"

#include <utility>
#include <wx/event.h>
#include <wx/window.h>

namespace vantro {

namespace {

constexpr int kPause = 3000; // milliseconds

} // namespace

TreeKeys::TreeKeys(wxWindow& list, NewsTree& tree, Actions actions)
    : tree_(tree), actions_(std::move(actions)), search_(tree), pause_(this)
{
    list.Bind(wxEVT_KEY_DOWN, &TreeKeys::OnKey, this);
    list.Bind(wxEVT_CHAR, &TreeKeys::OnCharacter, this);
    Bind(wxEVT_TIMER, [this](wxTimerEvent&) { EndSearch(); });
}

void TreeKeys::OnKey(wxKeyEvent& event)
{
    const int key = event.GetKeyCode();
    const bool menu = key == WXK_WINDOWS_MENU || key == WXK_MENU || (key == WXK_F10 && event.ShiftDown());
    if (key == 'F' && event.ControlDown())
        return; // opens the toolkit's search, see SwitchOffSearch()
    if (ChangeSearch(key) || (!event.HasModifiers() && ToggleBranch(key)))
        return;
    if (key == WXK_RETURN || key == WXK_NUMPAD_ENTER || (key == WXK_SPACE && search_.Text().empty()))
        actions_.click(TreeClicks::kLeftButton);
    else if (menu)
        actions_.click(TreeClicks::kRightButton);
    else
        event.Skip();
}

bool TreeKeys::ChangeSearch(int key)
{
    if (search_.Text().empty() || (key != WXK_BACK && key != WXK_ESCAPE))
        return false;
    if (key == WXK_BACK)
        TellSearch(search_.TakeBack());
    else
        EndSearch();
    return true;
}

// Letters and digits begin a search, but N alone; whatever is typed goes on with it.
void TreeKeys::OnCharacter(wxKeyEvent& event)
{
    const wxUniChar typed = event.GetUnicodeKey();
    const bool isSearching = !search_.Text().empty();
    if (event.HasModifiers() || typed < WXK_SPACE || typed == WXK_DELETE
        || (!isSearching && wxIsalnum(typed) == 0))
        event.Skip();
    else if (!isSearching && (typed == 'n' || typed == 'N'))
        ShowNextUnread();
    else
        TellSearch(search_.Add(wxString(typed).utf8_string()));
}

void TreeKeys::TellSearch(bool found)
{
    if (search_.Text().empty()) {
        EndSearch();
        return;
    }
    actions_.say(
        Words(found ? Marked("Looking for: %1") : Marked("No title in sight holds: %1"), {search_.Text()}));
    pause_.StartOnce(kPause);
}

void TreeKeys::EndSearch()
{
    pause_.Stop();
    search_.End();
    actions_.say({});
}

void TreeKeys::ShowNextUnread()
{
    NewsNode* next = NextUnread(tree_);
    if (next == nullptr) {
        actions_.say(Words("There is no unread item."));
        pause_.StartOnce(kPause);
        return;
    }
    tree_.SetExpanded(*tree_.Find(next->Parent()->Key()), true);
    tree_.Select(next);
    actions_.click(TreeClicks::kLeftButton);
}

// Left closes the branch of the selected node or goes up to it, right opens it.
bool TreeKeys::ToggleBranch(int key)
{
    NewsNode* node = tree_.SelectedItem();
    if (node == nullptr || (key != WXK_LEFT && key != WXK_RIGHT))
        return false;
    if (node->Parent() == nullptr)
        tree_.SetExpanded(*node, key == WXK_RIGHT);
    else if (key == WXK_LEFT)
        tree_.Select(tree_.Find(node->Parent()->Key()));
    return true;
}

} // namespace vantro
