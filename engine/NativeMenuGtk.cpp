#include "engine/NativeMenuGtk.h"

#include "base/Owned.h"
#include "base/Words.h"

#include <utility>

namespace vantro {

namespace {

struct Choice {
    NativeWebView::Command command;
    std::string link;
    std::function<void(NativeWebView::Command, const std::string&)> chosen;
};

void Append(WebKitContextMenu* menu, const char* label, bool enabled, Choice choice)
{
    const Owned<GSimpleAction, g_object_unref> action(g_simple_action_new(label, nullptr));
    g_simple_action_set_enabled(action.get(), enabled ? TRUE : FALSE);
    g_signal_connect_data(
        action.get(), "activate",
        G_CALLBACK(+[](GSimpleAction*, GVariant*, Choice* made) { made->chosen(made->command, made->link); }),
        new Choice(std::move(choice)), [](gpointer made, GClosure*) { delete static_cast<Choice*>(made); },
        G_CONNECT_DEFAULT);
    webkit_context_menu_append(
        menu, webkit_context_menu_item_new_from_gaction(G_ACTION(action.get()), label, nullptr));
}

} // namespace

void FillContextMenu(WebKitContextMenu* menu, WebKitHitTestResult* under, const ContextMenuState& state)
{
    using Command = NativeWebView::Command;
    const std::string link = webkit_hit_test_result_context_is_link(under) != FALSE
        ? webkit_hit_test_result_get_link_uri(under)
        : "";
    webkit_context_menu_remove_all(menu);
    Append(menu, Words("Back"), state.canGoBack, {Command::Back, {}, state.command});
    Append(menu, Words("Forward"), state.canGoForward, {Command::Forward, {}, state.command});
    Append(menu, Words("Reload"), true, {Command::Reload, {}, state.command});
    webkit_context_menu_append(menu, webkit_context_menu_item_new_separator());
    webkit_context_menu_append(
        menu, webkit_context_menu_item_new_from_stock_action(WEBKIT_CONTEXT_MENU_ACTION_COPY));
    Append(menu,
        Words(link.empty() ? Marked("Open Page in Default Browser") : Marked("Open Link in Default Browser")),
        true, {Command::OpenOutside, link, state.command});
}

} // namespace vantro
