#pragma once

#include "base/Twips.h"
#include "base/Words.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace vantro {

class RegValue;
class modRegistry;

enum class OptionKind : std::uint8_t {
    OnOff, // a check box; on exactly while 1 is stored
    Minutes // any number, in a text box on the blanks in the caption of the check box before it, which
            // enables it
};

// All there is to an option: the number it is stored as, directly under the program's key, and its control in
// the options dialog. No default is ever stored; what is missing is off, or no minutes.
// Its texts live as long as the program.
struct Option {
    std::string_view name; // of the stored value
    OptionKind kind;
    const char* control;
    int tabOrder;
    const char* caption; // of minutes only read out
    Rectangle place = {}; // of a check box in its frame, in twips
};

// The options that share a frame of the dialog, in the order in which they are filled.
struct OptionFrame {
    const char* control;
    std::int32_t height; // twips; a frame that is too low for its boxes becomes higher
    std::span<const Option> options;
};

// The options that belong to no site; those of a site stand in its row. Each may be read from anywhere by its
// constant, and is in the dialog because it is in a list.
inline constexpr Option kAutoExpandNew{"Auto Expand New", OptionKind::OnOff, "chkAutoExpandNew", 3,
    "Auto expand sites with New items", {240, 240, 2775, 255}};
inline constexpr Option kCheckAtStartup{"Check At Startup", OptionKind::OnOff, "chkNewAtStartup", 11,
    "Check for new items at start up", {240, 480, 2535, 255}};
inline constexpr Option kCheckInterval{"Check Interval", OptionKind::OnOff, "chkCheckInterval", 4,
    "Check for new items every                minutes", {240, 720, 3495, 315}};
inline constexpr Option kCheckIntervalMinutes{"Check Interval Minutes", OptionKind::Minutes,
    "txtCheckInterval", 5, Marked("Minutes between two checks")};

inline constexpr Option kGeneralOptions[]
    = {kAutoExpandNew, kCheckAtStartup, kCheckInterval, kCheckIntervalMinutes};
inline constexpr OptionFrame kGeneralFrame{"Frame1", 1215, kGeneralOptions};

// Empty when the option was never set.
[[nodiscard]] RegValue ReadOption(modRegistry& registry, const Option& option);
[[nodiscard]] bool IsOn(modRegistry& registry, const Option& option);
// Lost when it cannot be stored, as every write of the registry.
void StoreOption(modRegistry& registry, const Option& option, std::int32_t number);

// Every row of minutes has its check box right before it.
consteval bool IsConsistent(const OptionFrame& frame)
{
    OptionKind before = OptionKind::Minutes;
    for (const Option& option : frame.options) {
        if (option.kind == OptionKind::Minutes && before == OptionKind::Minutes)
            return false;
        before = option.kind;
    }
    return true;
}
static_assert(IsConsistent(kGeneralFrame));

} // namespace vantro
