#include "platform/StoreJournal.h"

#include "platform/Files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantro {

namespace {

constexpr std::size_t kHead = 32; // bytes: magic, version, page size, sequence, salt, checksum
constexpr std::size_t kFrameHead = 24; // bytes: page number, size of the file at a commit, salt, checksum
constexpr std::uint32_t kMagic = 0x377f0682; // the last bit tells in which order checksums read their words

std::uint32_t Word(std::string_view bytes, std::size_t at, bool bigEndian)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < sizeof word; ++i)
        word = word << 8 | static_cast<unsigned char>(bytes[at + (bigEndian ? i : sizeof word - 1 - i)]);
    return word;
}

struct Checksum {
    bool bigEndian = true;
    std::uint32_t first = 0;
    std::uint32_t second = 0;

    void Add(std::string_view bytes)
    {
        for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
            first += Word(bytes, at, bigEndian) + second;
            second += Word(bytes, at + 4, bigEndian) + first;
        }
    }
    [[nodiscard]] bool StandsAt(std::string_view bytes, std::size_t at) const
    {
        return Word(bytes, at, true) == first && Word(bytes, at + 4, true) == second;
    }
};

} // namespace

bool IsJournalDamaged(const std::filesystem::path& journal)
{
    const std::string bytes = ReadWholeFile(journal).value_or("");
    const std::string_view view = bytes;
    if (view.size() < kHead + kFrameHead)
        return false; // nothing was committed yet
    Checksum checksum{(Word(view, 0, true) & 1) != 0};
    checksum.Add(view.substr(0, kFrameHead));
    if ((Word(view, 0, true) & ~1U) != kMagic || !checksum.StandsAt(view, kFrameHead))
        return true;
    const std::string_view salt = view.substr(16, 8);
    const std::size_t frame = kFrameHead + Word(view, 8, true);
    bool isWhole = true;
    int commits = 0; // at or behind what is spoilt
    for (std::size_t at = kHead; at + frame <= view.size(); at += frame) {
        const std::string_view head = view.substr(at, kFrameHead);
        // Another one: left from before the journal was last begun anew, or spoilt.
        const bool isOfThis = head.substr(8, 8) == salt;
        checksum.Add(head.substr(0, 8));
        checksum.Add(view.substr(at + kFrameHead, frame - kFrameHead));
        isWhole = isWhole && isOfThis && checksum.StandsAt(view, at + 16);
        // One may be what the power cut short: it was not acknowledged, and its pages reach the disk in any
        // order.
        if (!isWhole && isOfThis && Word(head, 4, true) != 0 && ++commits == 2)
            return true;
    }
    return false;
}

} // namespace vantro
