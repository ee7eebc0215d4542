#include "feeds/ItemTag.h"
#include "feeds/SiteModules.h"
#include "platform/Resources.h"

#include <gtest/gtest.h>

#include <glib.h>
#include <regex>
#include <set>

namespace vantro {
namespace {

std::string Digest(std::string_view script)
{
    GChecksum* sum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(
        sum, reinterpret_cast<const guchar*>(script.data()), static_cast<gssize>(script.size()));
    guint8 bytes[32];
    gsize size = sizeof bytes;
    g_checksum_get_digest(sum, bytes, &size);
    g_checksum_free(sum);
    gchar* text = g_base64_encode(bytes, size);
    std::string digest = text;
    g_free(text);
    return digest;
}

std::string Page(std::string_view type, std::string_view name)
{
    return std::string(FindResource(type, name).value_or(""));
}

std::string Between(const std::string& text, std::string_view opens, std::string_view closes)
{
    const std::size_t begin = text.find(opens);
    if (begin == std::string::npos)
        return {};
    const std::size_t end = text.find(closes, begin + opens.size());
    return end == std::string::npos ? "" : text.substr(begin + opens.size(), end - begin - opens.size());
}

struct Kind {
    const char* type;
    const char* name;
    bool isFrames;
};
constexpr Kind kPages[] = {{"XBINS", "FRAMES", true}, {"XBINS", "MAIN", false}, {"XBINS", "TITLE", false},
    {"VANTRO", "FRAMES", true}, {"VANTRO", "MAIN", false}, {"VANTRO", "TITLE", false},
    {"MAXCONSOLE", "FRAMES", true}, {"MAXCONSOLE", "MAIN", false}, {"MAXCONSOLE", "TITLE", false},
    {"XBOXSCENE", "FRAMES", true}, {"XBOXSCENE", "MAIN", false}, {"XBOXSCENE", "TITLE", false},
    {"VANTRO", "ABOUT-MAIN", false}, {"VANTRO", "HELP", false}, {"VANTRO", "DONATIONS", false}};

TEST(Templates, BeginWithAPolicyThatRunsTheirOwnScriptOnly)
{
    for (const Kind& kind : kPages) {
        SCOPED_TRACE(std::string(kind.type) + " " + kind.name);
        const std::string page = Page(kind.type, kind.name);
        EXPECT_EQ(page.find("<meta http-equiv=\"Content-Security-Policy\""),
            page.find('<', page.find("<head>") + 1));
        EXPECT_LT(page.find("<head>"), page.find('['));
        const std::string policy = Between(page, "Content-Security-Policy\" content=\"", "\"");
        EXPECT_TRUE(policy.starts_with("default-src 'none'; ")) << policy;
        const std::string script = Between(page, "<script type=\"text/javascript\">", "</script>");
        EXPECT_EQ(script.empty(), kind.isFrames);
        EXPECT_EQ(
            Between(policy, "script-src ", ";"), kind.isFrames ? "" : "'sha256-" + Digest(script) + "'");
        for (const char* part : {"form-action 'none'", "base-uri 'none'"})
            EXPECT_NE(policy.find(part), std::string::npos) << part;
        for (const char* never : {"connect-src", "object-src", "media-src", "unsafe-eval"})
            EXPECT_EQ(policy.find(never), std::string::npos) << never;
        EXPECT_EQ(policy.find("frame-src") != std::string::npos, kind.isFrames);
        EXPECT_EQ(ReplaceAll(page, "\r\n", "").find_first_of("\r\n"), std::string::npos)
            << "lines end in CR LF";
        EXPECT_TRUE(
            std::all_of(page.begin(), page.end(), [](char c) { return static_cast<signed char>(c) > 0; }));
    }
}

TEST(Templates, HoldWhatTheRecipesReplaceAndNothingMore)
{
    // A step may wait for a text that an item brings along: these stand in no template of ours.
    const std::set<std::string> inItemsOnly{"VANTRO %5BVERSION%5D"};
    for (const SiteModule* module : SiteModules()) {
        const PageRecipe& recipe = *module->Row().page;
        const std::string frames = Page(recipe.resourceType, "FRAMES");
        for (const FilledTemplate& filled : recipe.filled) {
            std::string page = Page(recipe.resourceType, filled.name);
            EXPECT_NE(frames.find("src=\"" + std::string(filled.file) + "\""), std::string::npos)
                << filled.file;
            for (const Replacement& step : filled.replacements) {
                const std::string what = std::string(recipe.resourceType) + " " + std::string(step.search);
                EXPECT_EQ(page.find(step.search) == std::string::npos, inItemsOnly.contains(what)) << what;
                page = ReplaceAll(std::move(page), step.search, "");
            }
            static const std::regex placeholder(R"re(\[[A-Z][A-Z ]*\]|%5B|\w\.(gif|jpg)\b)re");
            EXPECT_FALSE(std::regex_search(page, placeholder)) << filled.file;
        }
        for (const char* part : {"name=\"titleFrame\"", "name=\"mainFrame\"", "rows=\"95,*\"",
                 "<title>Untitled Document</title>"})
            EXPECT_NE(frames.find(part), std::string::npos) << part;
    }
}

} // namespace
} // namespace vantro
