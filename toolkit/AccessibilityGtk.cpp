#include "toolkit/Accessibility.h"

#include "base/Owned.h"

#include <gtk/gtk-a11y.h>
#include <gtk/gtk.h>
#include <wx/dataview.h>
#include <wx/statusbr.h>

namespace vantro {

namespace {

constexpr const char* kNotes = "vantro-accessibility";
constexpr const char* kWords = "vantro-words-after-text";

// What is kept with a widget until somebody asks, and followed by the object made for it from then on.
struct Notes {
    ~Notes()
    {
        if (object)
            gtk_accessible_set_widget(GTK_ACCESSIBLE(object.get()), nullptr); // others may hold it still
    }

    std::string name;
    AtkRole role = ATK_ROLE_INVALID;
    double part = 0; // of a progress bar
    Owned<AtkObject, g_object_unref> object;
};

Notes* NotesOf(gpointer widget)
{
    return static_cast<Notes*>(g_object_get_data(G_OBJECT(widget), kNotes));
}

// A type like `parent`, but for what `initClass` sets.
GType Derive(GType parent, const char* name, GClassInitFunc initClass)
{
    GTypeQuery query;
    g_type_query(parent, &query);
    return g_type_register_static_simple(
        parent, name, query.class_size, initClass, query.instance_size, nullptr, GTypeFlags{});
}

void ValueAndText(AtkValue* bar, double* value, char** text)
{
    if (text != nullptr)
        *text = nullptr;
    GtkWidget* widget = gtk_accessible_get_widget(GTK_ACCESSIBLE(bar));
    *value = widget != nullptr ? NotesOf(widget)->part : 0;
}

// The older way, by which a change of the value is still reported.
void CurrentValue(AtkValue* bar, GValue* value)
{
    double part = 0;
    ValueAndText(bar, &part, nullptr);
    *value = G_VALUE_INIT;
    g_value_set_double(g_value_init(value, G_TYPE_DOUBLE), part);
}

void FillValueTable(gpointer table, gpointer /*data*/)
{
    auto* values = static_cast<AtkValueIface*>(table);
    values->get_current_value = CurrentValue;
    values->get_value_and_text = ValueAndText;
    values->get_range = [](AtkValue*) { return atk_range_new(0, 1, nullptr); };
}

GType ProgressBarType()
{
    static const GType made = [] {
        const GType type = Derive(GTK_TYPE_WIDGET_ACCESSIBLE, "VantroProgressBarAccessible", nullptr);
        constexpr GInterfaceInfo kValue{FillValueTable, nullptr, nullptr};
        g_type_add_interface_static(type, ATK_TYPE_VALUE, &kValue);
        return type;
    }();
    return made;
}

// Takes the place of the toolkit's own, which no class here overrides.
AtkObject* GetAccessible(GtkWidget* widget)
{
    const auto original = GTK_WIDGET_CLASS(g_type_class_peek(GTK_TYPE_WIDGET))->get_accessible;
    Notes* notes = NotesOf(widget);
    if (notes == nullptr)
        return original(widget);
    if (notes->object)
        return notes->object.get();
    if (notes->role == ATK_ROLE_PROGRESS_BAR) {
        notes->object.reset(ATK_OBJECT(g_object_new(ProgressBarType(), "widget", widget, nullptr)));
        atk_object_initialize(notes->object.get(), widget);
    } else
        notes->object.reset(ATK_OBJECT(g_object_ref(original(widget))));
    if (notes->role != ATK_ROLE_INVALID)
        atk_object_set_role(notes->object.get(), notes->role);
    atk_object_set_name(notes->object.get(), notes->name.c_str());
    return notes->object.get();
}

Notes& MakeNotes(GtkWidget* widget)
{
    if (NotesOf(widget) == nullptr) {
        g_object_set_data_full(
            G_OBJECT(widget), kNotes, new Notes, [](gpointer notes) { delete static_cast<Notes*>(notes); });
        GTK_WIDGET_GET_CLASS(widget)->get_accessible = GetAccessible;
    }
    return *NotesOf(widget);
}

void SetName(GtkWidget* widget, const std::string& name)
{
    Notes& notes = MakeNotes(widget);
    notes.name = name;
    if (notes.object)
        atk_object_set_name(notes.object.get(), name.c_str());
}

// Screen readers read the text of a cell, and of its name and description nothing: so the words are added to
// the text itself, for as long as the toolkit takes it over.
void UpdateCache(GtkCellAccessible* cell, gboolean emitSignal)
{
    const auto* original = GTK_CELL_ACCESSIBLE_CLASS(g_type_class_peek(GTK_TYPE_TEXT_CELL_ACCESSIBLE));
    GtkCellRenderer* held = nullptr;
    char* shown = nullptr;
    g_object_get(cell, "renderer", &held, nullptr);
    const Owned<GtkCellRenderer, g_object_unref> renderer(held);
    g_object_get(held, "text", &shown, nullptr);
    const Owned<char, g_free> text(shown);
    const auto* words = static_cast<const char*>(g_object_get_data(G_OBJECT(held), kWords));
    if (words != nullptr)
        g_object_set(held, "text", (std::string(shown) + ", " + words).c_str(), nullptr);
    original->update_cache(cell, emitSignal);
    if (words != nullptr)
        g_object_set(held, "text", shown, nullptr);
}

GType CellType()
{
    static const GType made
        = Derive(GTK_TYPE_TEXT_CELL_ACCESSIBLE, "VantroCellAccessible", [](gpointer table, gpointer) {
              static_cast<GtkCellAccessibleClass*>(table)->update_cache = UpdateCache;
          });
    return made;
}

} // namespace

void SetAccessibleName(wxWindow& window, const std::string& name)
{
    SetName(window.GetHandle(), name);
}

void SetAccessibleName(wxDataViewCtrl& list, const std::string& name)
{
    SetName(list.GtkGetTreeView(), name);
}

void TellAsProgressBar(wxWindow& window, double part)
{
    Notes& notes = MakeNotes(window.GetHandle());
    notes.role = ATK_ROLE_PROGRESS_BAR;
    if (notes.part == part)
        return;
    notes.part = part;
    if (notes.object)
        g_object_notify(G_OBJECT(notes.object.get()), "accessible-value");
}

void TellAsStatusBar(wxStatusBar& bar, const std::string& text)
{
    Notes& notes = MakeNotes(bar.GetHandle());
    notes.role = ATK_ROLE_STATUSBAR;
    SetName(bar.GetHandle(), text.empty() ? "Status" : text);
    if (notes.object && !text.empty())
        g_signal_emit_by_name(notes.object.get(), "announcement", text.c_str());
}

void SayAfterText(wxDataViewRenderer& renderer, const char* words)
{
    GtkCellRenderer* native = renderer.GetGtkHandle();
    gtk_cell_renderer_class_set_accessible_type(GTK_CELL_RENDERER_GET_CLASS(native), CellType());
    g_object_set_data(G_OBJECT(native), kWords, const_cast<char*>(words));
}

} // namespace vantro
