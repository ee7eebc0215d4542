#pragma once

#include "base/AsciiText.h"
#include "feeds/PageRecipe.h"
#include "feeds/Site.h"
#include "settings/Options.h"

#include <algorithm>
#include <string_view>

namespace vantro {

// Checks of pages and sites while they are compiled: static_assert(IsConsistent(...)) beside each. What is
// wrong does not build, and the compiler's message shows the sentence of the check that failed.

// What does not hold ends the compilation: a constant expression cannot throw.
constexpr void Require(bool holds, const char* /*orElse*/)
{
    if (!holds)
        throw false;
}

// Once, that is: a file written twice does not count.
constexpr bool Writes(const PageRecipe& page, std::string_view file)
{
    return std::ranges::count(page.saved, file, &SavedResource::file)
        + std::ranges::count(page.filled, file, &FilledTemplate::file)
        == 1;
}

constexpr bool HasStep(const PageRecipe& page, PageValue value)
{
    return std::ranges::any_of(page.filled, [value](const FilledTemplate& filled) {
        return std::ranges::count(filled.replacements, value, &Replacement::value) > 0;
    });
}

// Under that name in any letter case, as the store compares names.
constexpr bool Keeps(const Site& site, std::string_view value)
{
    return std::ranges::any_of(
        site.stored, [value](const SiteField& field) { return IsSameIgnoringCase(field.value, value); });
}

// Whether the site has the option; null, which is that of a page that asks for none, it has.
constexpr bool Offers(const Site& site, const Option* option)
{
    return option == nullptr
        || std::ranges::count(site.optionFrame.options, option->name, &Option::name) == 1;
}

// Of the files of any page.
consteval bool IsConsistent(const PageRecipe& page)
{
    Require(Writes(page, page.shown), "the file shown is written");
    Require(page.deleted.size() == page.saved.size() + page.filled.size(), "each file written is deleted");
    for (const std::string_view file : page.deleted)
        Require(
            Writes(page, file) && std::ranges::count(page.deleted, file) == 1, "a file deleted is written");
    for (const FilledTemplate& filled : page.filled) {
        for (const Replacement& step : filled.replacements) {
            if (step.value == PageValue::FileOf)
                Require(Writes(page, step.argument), "a file that a replacement names is written");
            if (step.value == PageValue::Stored)
                Require(std::ranges::count(page.fields, step.argument, &PageField::value) == 1,
                    "a value that a replacement names is read for the page");
        }
    }
    const bool hasTarget = HasStep(page, PageValue::ExternalTarget);
    Require(
        hasTarget == (page.externalOption != nullptr), "a page with an external target has an option for it");
    Require(hasTarget != page.externalPrefix.empty(), "a page with an external target has a name for it");
    return true;
}

// Such as CutItems() takes.
consteval bool IsCuttable(std::string_view element)
{
    return !element.empty() && std::ranges::all_of(element, [](char c) { return c >= 'a' && c <= 'z'; });
}

// Of a site, its page and its options. What has to differ between sites, which are units of their own, the
// tests check.
consteval bool IsConsistent(const Site& site)
{
    Require(site.prefix.size() == kPrefixLength, "the prefix has its length");
    Require(!site.host.ends_with('/') && site.feedPath.starts_with('/'), "the slash belongs to the path");
    Require(site.taken.front().value == "Title", "the title is taken first");
    Require(site.taken.size() == site.stored.size(), "as many fields are stored as are taken");
    for (const SiteField& field : site.taken) {
        Require(
            std::ranges::count(site.stored, field.value, &SiteField::value) == 1, "what is taken is stored");
        Require(std::ranges::count(site.taken, field.element, &SiteField::element) == 1
                && field.element != "item" && IsCuttable(field.element),
            "an element can be cut out of an item");
    }
    for (const PageField& field : site.page->fields)
        Require(Keeps(site, field.value), "a value that the page reads is one that the site keeps");
    Require(std::ranges::count(site.page->fields, "Link", &PageField::value) == 1, "the page reads the link");
    Require(site.page->filled.size() == 2, "an item page has the templates of its two frames");
    Require(Offers(site, site.page->externalOption) && Offers(site, site.page->autoLinkOption),
        "an option that the page asks for is one of the site's");
    Require(IsConsistent(site.optionFrame), "minutes have their check box before them");
    return IsConsistent(*site.page);
}

} // namespace vantro
