#include "feeds/modXML.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace vantro {

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

bool StandsAt(std::string_view text, std::size_t position, std::string_view lowerTag)
{
    const std::string_view given = text.substr(position, lowerTag.size());
    return given == lowerTag || IsSameIgnoringCase(given, lowerTag); // most feeds write small letters
}

// The tags of a few elements, told from all others by a letter or two.
class TagTable {
public:
    struct Tag {
        std::size_t element = 0;
        bool closes = false;
        std::string rest; // behind "<" or "</", in lower case
    };

    explicit TagTable(std::span<const std::string_view> elements)
    {
        tags_.reserve(2 * elements.size());
        for (std::size_t i = 0; i < elements.size(); ++i) {
            Add({i, false, std::string(elements[i]) + ">"});
            Add({i, true, std::string(elements[i]) + ">"});
        }
    }

    // The tag that the "<" at this place begins; null when it is none of these.
    [[nodiscard]] const Tag* Find(std::string_view text, std::size_t open) const
    {
        if (text.size() - open < 3)
            return nullptr;
        const bool closes = text[open + 1] == '/';
        const std::size_t name = open + (closes ? 2 : 1);
        for (std::size_t i = first_[Place(closes, text[name])]; i != 0; i = next_[i - 1]) {
            if (StandsAt(text, name, tags_[i - 1].rest))
                return &tags_[i - 1];
        }
        return nullptr;
    }

private:
    static std::size_t Place(bool closes, char letter)
    {
        return (closes ? kLetters : 0) + static_cast<unsigned char>(ToLowerAscii(letter));
    }

    void Add(Tag tag)
    {
        std::uint8_t& first = first_[Place(tag.closes, tag.rest.front())];
        next_.push_back(std::exchange(first, static_cast<std::uint8_t>(tags_.size() + 1)));
        tags_.push_back(std::move(tag));
    }

    static constexpr std::size_t kLetters = 256;
    std::vector<Tag> tags_;
    // Places in tags_, counted from 1: the last tag of a letter, and those before it.
    std::array<std::uint8_t, 2 * kLetters> first_{};
    std::vector<std::uint8_t> next_;
};

// Goes through a feed from tag to tag and notes what it has found of the item under way.
class FeedCutter {
public:
    FeedCutter(std::string_view feed, std::size_t most, std::size_t elements)
        : feed_(feed), most_(most), fields_(elements)
    {
    }

    // What follows can change nothing any more.
    [[nodiscard]] bool IsDone() const { return std::min(items_, openedItems_) == most_; }

    void TakeItemTag(bool closes, std::size_t at, std::size_t end)
    {
        if (!closes) {
            if (begin_ == kNowhere)
                Begin(at);
            openedItems_ = std::min(items_ + 1, most_);
        } else if (begin_ != kNowhere && items_ < most_) {
            Append(end);
            Begin(end);
        }
    }

    // Only the first opening and the first closing tag of an element count.
    void TakeFieldTag(std::size_t element, bool closes, std::size_t at, std::size_t end)
    {
        Field& field = fields_[element];
        if (field.end != kNowhere)
            return;
        if (closes)
            field.end = at;
        else if (field.begin == kNowhere)
            field.begin = end;
    }

    [[nodiscard]] std::vector<std::string_view> Rows() &&
    {
        rows_.resize(std::min(items_, openedItems_) * (1 + fields_.size()));
        return std::move(rows_);
    }

private:
    struct Field {
        std::size_t begin = kNowhere;
        std::size_t end = kNowhere;
    };

    void Begin(std::size_t at)
    {
        begin_ = at;
        std::ranges::fill(fields_, Field{});
    }

    void Append(std::size_t end)
    {
        ++items_;
        rows_.push_back(feed_.substr(begin_, end - begin_));
        for (const Field& field : fields_) {
            const bool whole = field.begin != kNowhere && field.end != kNowhere;
            rows_.push_back(whole ? feed_.substr(field.begin, field.end - field.begin) : std::string_view());
        }
    }

    std::string_view feed_;
    std::size_t most_;
    std::size_t begin_ = kNowhere; // of the item under way
    std::vector<Field> fields_; // of the item under way
    std::vector<std::string_view> rows_;
    std::size_t items_ = 0; // in the rows
    std::size_t openedItems_ = 0; // so many have an opening tag somewhere behind their beginning, and count
};

} // namespace

std::string_view ExtractTag(std::string_view tagName, std::string_view text)
{
    const std::string name = ToLowerAscii(Trim(tagName, " "));
    const std::string opening = "<" + name + ">";
    const std::string closing = "</" + name + ">";
    std::size_t begin = kNowhere;
    for (std::size_t at = text.find('<'); at != kNowhere; at = text.find('<', at + 1)) {
        if (StandsAt(text, at, closing)) // the first one of the text, so nothing behind it matters
            return begin == kNowhere ? std::string_view() : text.substr(begin, at - begin);
        if (begin == kNowhere && StandsAt(text, at, opening))
            begin = at + opening.size();
    }
    return {};
}

std::vector<std::string_view> SplitItems(std::string_view feedText, std::size_t most)
{
    return CutItems(feedText, most, {});
}

std::vector<std::string_view> CutItems(
    std::string_view feedText, std::size_t most, std::span<const std::string_view> elements)
{
    std::vector<std::string_view> names(elements.begin(), elements.end());
    names.emplace_back("item");
    const TagTable table(names);
    FeedCutter cutter(feedText, most, elements.size());
    for (std::size_t at = feedText.find('<'); at != kNowhere && !cutter.IsDone();
         at = feedText.find('<', at + 1)) {
        const TagTable::Tag* tag = table.Find(feedText, at);
        if (tag == nullptr)
            continue;
        const std::size_t end = at + (tag->closes ? 2 : 1) + tag->rest.size();
        if (tag->element < elements.size())
            cutter.TakeFieldTag(tag->element, tag->closes, at, end);
        else
            cutter.TakeItemTag(tag->closes, at, end);
    }
    return std::move(cutter).Rows();
}

} // namespace vantro
