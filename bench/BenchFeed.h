#pragma once

#include <string>

namespace vantro {

// A news feed of `count` items with the titles "Story first", "Story first + 1" and so on: some 500 bytes an
// item, with elements the program does not take, references, CDATA and letters beyond ASCII, as real feeds
// have.
[[nodiscard]] inline std::string MakeFeed(int first, int count)
{
    std::string feed = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rss version=\"2.0\"><channel>\n"
                       "<title>Console news</title><link>http://news.example/</link>\n";
    for (int story = first; story < first + count; ++story) {
        const std::string number = std::to_string(story);
        feed += "<item>\n<title>Story " + number
            + ": caf\xC3\xA9 &amp; console</title>\n<link>http://news.example/story?id=" + number
            + "&amp;from=feed</link>\n<guid isPermaLink=\"false\">news-" + number
            + "</guid>\n<category>Games</category><pubDate>Sat, 05 Jul 2003 10:12:00 GMT</pubDate>\n"
              "<description><![CDATA[<p>A longer text about what happened, with <b>bold words</b>, a "
              "<a href=\"http://news.example/more\">link</a> and <br> breaks. It goes on for a sentence or "
              "two, as "
              "descriptions do, and then it ends.</p>]]></description>\n</item>\n";
    }
    return feed + "</channel></rss>\n";
}

} // namespace vantro
