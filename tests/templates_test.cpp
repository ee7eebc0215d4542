#include "base/Owned.h"
#include "base/Resources.h"
#include "feeds/ItemTag.h"
#include "feeds/SiteOperations.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <regex>

namespace vantro {

namespace {

std::string Digest(std::string_view script)
{
    const Owned<GChecksum, g_checksum_free> sum(g_checksum_new(G_CHECKSUM_SHA256));
    g_checksum_update(
        sum.get(), reinterpret_cast<const guchar*>(script.data()), static_cast<gssize>(script.size()));
    guint8 bytes[32];
    gsize size = sizeof bytes;
    g_checksum_get_digest(sum.get(), bytes, &size);
    return Owned<gchar, g_free>(g_base64_encode(bytes, size)).get();
}

std::string Page(std::string_view type, std::string_view name)
{
    return std::string(FindResource(type, name).value_or(""));
}

TEST(Templates, BeginWithAPolicyThatRunsTheirOwnScriptOnly)
{
    const std::string begins
        = "<head>\r\n<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; ";
    const std::string ends = "form-action 'none'; base-uri 'none'\">";
    const std::regex withScript(begins
        + "script-src 'sha256-([^']*)'; style-src 'unsafe-inline'; img-src(?: vantro-page:)?( http: https: "
          "data:)?; "
        + ends + R"([^\[]*<script type="text/javascript">([^<]*)</script>)");
    const std::string framesPolicy = begins + "frame-src vantro-page: http: https: mailto:; " + ends;
    std::size_t pages = 0;
    for (const Site* site : Sites()) {
        const std::string type(site->page->resourceType);
        for (const std::string name : {"FRAMES", "MAIN", "TITLE", "ABOUT-MAIN", "HELP", "DONATIONS"}) {
            SCOPED_TRACE(::testing::Message() << type << ' ' << name);
            const std::string page = Page(type, name);
            std::smatch found;
            if (name == "FRAMES")
                EXPECT_NE(page.find(framesPolicy), std::string::npos);
            else if (!page.empty() && std::regex_search(page, found, withScript)) {
                EXPECT_EQ(found[1], Digest(found[3].str()));
                EXPECT_EQ(found[2].matched, name == "MAIN") << "pictures from elsewhere";
            } else
                EXPECT_EQ(page, "");
            EXPECT_EQ(ReplaceAll(page, "\r\n", "").find_first_of("\r\n"), std::string::npos);
            EXPECT_EQ(page.find("<base target=\"mainFrame\">") != std::string::npos, name == "TITLE");
            static const std::regex fixedLines(R"re((line-height: ?|px/)\d+px)re");
            EXPECT_FALSE(std::regex_search(page, fixedLines)) << "large letters would overlap";
            const bool holdsFeedText = page.find("[TITLE]") + 1 + page.find("[DESCRIPTION]") + 1 != 0;
            static const std::regex hidden(
                R"re(embed,( object,)? iframe, video, audio\)? \{ display: none !important; \})re");
            EXPECT_EQ(std::regex_search(page, hidden), holdsFeedText) << "boxes of what cannot show";
            pages += page.empty() ? 0 : 1;
        }
    }
    EXPECT_EQ(pages, 3 * Sites().size() + 3) << "three of each site, and those of the menu";
}

TEST(Templates, HoldWhatTheRecipesReplaceAndNothingMore)
{
    const std::string inItemsOnly = "VANTRO %5BVERSION%5D"; // stands in no template of ours
    for (const Site* site : Sites()) {
        const PageRecipe& recipe = *site->page;
        const std::string frames = Page(recipe.resourceType, "FRAMES");
        for (const FilledTemplate& filled : recipe.filled) {
            std::string page = Page(recipe.resourceType, filled.name);
            EXPECT_NE(frames.find("src=\"" + std::string(filled.file) + "\""), std::string::npos)
                << filled.file;
            for (const Replacement& step : filled.replacements) {
                const std::string what = std::string(recipe.resourceType) + " " + std::string(step.search);
                EXPECT_EQ(page.find(step.search) == std::string::npos, what == inItemsOnly) << what;
                page = ReplaceAll(std::move(page), step.search, "");
            }
            static const std::regex placeholder(R"re(\[[A-Z][A-Z ]*\]|%5B|\w\.(gif|jpg)\b)re");
            EXPECT_FALSE(std::regex_search(page, placeholder)) << filled.file;
        }
    }
}

} // namespace

} // namespace vantro
