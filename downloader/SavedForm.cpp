#include "downloader/SavedForm.h"

#include "base/Resources.h"

#include <utility>

namespace vantro {

PropertyBag SavedProperties(std::string_view form, std::string_view control)
{
    const std::string_view name = control.substr(0, control.find('('));
    for (SavedControl& saved : ParseSavedForm(FindResource("FORMS", form).value_or(std::string_view{}))) {
        if (saved.name == name)
            return std::move(saved.properties);
    }
    return {};
}

} // namespace vantro
