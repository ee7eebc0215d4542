#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vantro {

struct Option;

// Where the value of a replacement comes from.
enum class PageValue : std::uint8_t {
    Stored, // the item's stored value named by `argument`, exactly as stored; dates in the user's words
    Version, // the program's version line
    MainFrame, // the name of the bottom frame
    ExternalTarget, // a target outside the page when `externalOption` is on, else the bottom frame
    FileOf // the address under which the browser finds the page file `argument`
};

// One step of filling a template: every occurrence of `search` gives way to the value, also in what earlier
// steps put in.
struct Replacement {
    std::string_view search;
    PageValue value;
    std::string_view argument = {};
};

// A resource of the page's type and this name, written as it is into the program's folder under `file`.
struct SavedResource {
    std::string_view file;
    std::string_view name;
};

// A template that is filled and then written, likewise.
struct FilledTemplate {
    std::string_view file;
    std::string_view name;
    std::span<const Replacement> replacements;
};

// A stored value that a page reads.
struct PageField {
    std::string_view value;
    bool isDate = false;
};

inline constexpr std::string_view kTitleFrame = "titleFrame"; // the top frame of item pages

// A page as data. All lists are in the order in which things are done; what they and the pointers refer to
// are constants that live as long as the program. SiteCheck.h says what has to fit together.
struct PageRecipe {
    std::string_view resourceType;
    std::span<const SavedResource> saved;
    std::span<const FilledTemplate> filled; // of item pages: that of the bottom frame, that of the top frame
    std::string_view shown; // the file the browser is sent to
    std::span<const std::string_view> deleted;

    // Of item pages only.
    std::span<const PageField> fields = {};
    const Option* externalOption = nullptr;
    std::string_view externalPrefix = {}; // in front of the item's number in an external target
    std::string_view emptyLink = {}; // a "Link" of this address, in any letter case, counts as empty
    const Option* autoLinkOption = nullptr; // when on, the bottom frame goes to the "Link" by itself
};

} // namespace vantro
