#include "tests/support/FaultyDisk.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <utility>

namespace vantro {

static FaultyDisk* disk = nullptr;
constexpr std::size_t kSector = 512; // bytes that are written whole or not at all

static void Apply(std::string& text, std::int64_t at, std::string_view bytes)
{
    text.resize(std::max(text.size(), static_cast<std::size_t>(at) + bytes.size()));
    text.replace(static_cast<std::size_t>(at), bytes.size(), bytes);
}

// What SQLite calls, in its order.
struct DiskCalls {
    struct File {
        sqlite3_file shown;
        FaultyDisk::Content* content;
        bool isJournal; // whose first sync is SQLite's sync of its folder, too
        sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };
    static File& Of(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }

    template <FaultyDisk::Call call, auto Method, typename... Arguments>
    static int Pass(sqlite3_file* file, Arguments... arguments)
    {
        const int code = call == FaultyDisk::kCalls ? SQLITE_OK : disk->Note(call);
        sqlite3_file* real = Of(file).Real();
        return code == SQLITE_OK ? (real->pMethods->*Method)(real, arguments...) : code;
    }
    static int Close(sqlite3_file* file) { return Of(file).Real()->pMethods->xClose(Of(file).Real()); }
    static int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 at)
    {
        if (const int code = disk->Note(FaultyDisk::Write); code != SQLITE_OK)
            return code;
        disk->onChange();
        const std::string text(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
        Of(file).content->since.push_back({at, text, false});
        return Of(file).Real()->pMethods->xWrite(Of(file).Real(), bytes, size, at);
    }
    static int Truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        if (const int code = disk->Note(FaultyDisk::Truncate); code != SQLITE_OK)
            return code;
        disk->onChange();
        Of(file).content->since.push_back({size, "", true});
        return Of(file).Real()->pMethods->xTruncate(Of(file).Real(), size);
    }
    static int Sync(sqlite3_file* file, int /*flags*/)
    {
        if (const int code = disk->Note(FaultyDisk::Sync); code != SQLITE_OK)
            return code;
        disk->onChange();
        for (const auto& [name, content] : disk->names_.back()) {
            if (content == Of(file).content)
                FaultyDisk::Synced(name);
        }
        if (std::exchange(Of(file).isJournal, false))
            FaultyDisk::Synced("/");
        return SQLITE_OK;
    }
    static int ShmLock(sqlite3_file* file, int first, int count, int flags)
    {
        const int code = (flags & SQLITE_SHM_LOCK) != 0 ? disk->Note(FaultyDisk::Lock) : SQLITE_OK;
        sqlite3_file* real = Of(file).Real();
        return code == SQLITE_OK ? real->pMethods->xShmLock(real, first, count, flags) : code;
    }
    static void ShmBarrier(sqlite3_file* file) { Of(file).Real()->pMethods->xShmBarrier(Of(file).Real()); }

    static int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* flagsGiven)
    {
        using M = sqlite3_io_methods;
        constexpr auto kNone = FaultyDisk::kCalls;
        static constexpr M methods{2, Close, Pass<FaultyDisk::Read, &M::xRead>, Write, Truncate, Sync,
            Pass<kNone, &M::xFileSize>, Pass<FaultyDisk::Lock, &M::xLock>, Pass<kNone, &M::xUnlock>,
            Pass<FaultyDisk::Lock, &M::xCheckReservedLock>, Pass<kNone, &M::xFileControl>,
            Pass<kNone, &M::xSectorSize>, Pass<kNone, &M::xDeviceCharacteristics>,
            Pass<FaultyDisk::Map, &M::xShmMap>, ShmLock, ShmBarrier, Pass<kNone, &M::xShmUnmap>, nullptr,
            nullptr};
        file->pMethods = nullptr;
        if (const int code = disk->Note(FaultyDisk::Open); code != SQLITE_OK)
            return code;
        const bool isNew = !std::filesystem::exists(name);
        const int code = disk->real_.xOpen(&disk->real_, name, Of(file).Real(), flags, flagsGiven);
        if (code != SQLITE_OK)
            return code;
        FaultyDisk::Names names = disk->names_.back();
        if (isNew || !names.contains(name)) {
            disk->onChange();
            names[name] = &disk->contents_.emplace_back();
            disk->names_.push_back(names);
        }
        file->pMethods = &methods;
        Of(file).content = names[name];
        Of(file).isJournal = isNew && !(flags & SQLITE_OPEN_MAIN_DB);
        return SQLITE_OK;
    }
    static int Delete(sqlite3_vfs* /*vfs*/, const char* name, int syncsFolder)
    {
        if (const int code = disk->Note(FaultyDisk::Delete); code != SQLITE_OK)
            return code;
        disk->onChange();
        FaultyDisk::Names names = disk->names_.back();
        names.erase(name);
        disk->names_.push_back(names);
        const int code = disk->real_.xDelete(&disk->real_, name, 0);
        if (syncsFolder != 0)
            FaultyDisk::Synced("/");
        return code;
    }
    static int Sleep(sqlite3_vfs* /*vfs*/, int microseconds) { return microseconds; }
};

FaultyDisk::FaultyDisk() : real_(*sqlite3_vfs_find(nullptr)), before_(sqlite3_vfs_find(nullptr))
{
    disk = this;
    shown_ = real_;
    shown_.zName = "faulty";
    shown_.szOsFile += static_cast<int>(sizeof(DiskCalls::File));
    shown_.xOpen = DiskCalls::Open;
    shown_.xDelete = DiskCalls::Delete;
    shown_.xSleep = DiskCalls::Sleep;
    sqlite3_vfs_register(&shown_, 1);
}

FaultyDisk::~FaultyDisk()
{
    sqlite3_vfs_unregister(&shown_);
    sqlite3_vfs_register(before_, 1);
    disk = nullptr;
}

void FaultyDisk::Fail(Call call, int at, int code, bool forever)
{
    count_ = {};
    failed_ = false;
    kind_ = call;
    at_ = at;
    code_ = code;
    forever_ = forever;
}

int FaultyDisk::Note(Call call)
{
    const int number = ++count_[call];
    const bool fails = call == kind_ && (forever_ ? number >= at_ : number == at_);
    failed_ = failed_ || fails;
    return fails ? code_ : SQLITE_OK;
}

void FaultyDisk::Renamed(const std::string& from, const std::string& to)
{
    if (!disk || !disk->names_.back().contains(from))
        return;
    disk->onChange();
    Names names = disk->names_.back();
    names[to] = names[from];
    names.erase(from);
    disk->names_.push_back(names);
}

void FaultyDisk::Synced(const std::string& path)
{
    if (!disk)
        return;
    Names& names = disk->names_.back();
    if (std::filesystem::is_directory(path)) {
        std::erase_if(names, [](const auto& name) { return !std::filesystem::exists(name.first); });
        disk->names_ = {Names(names)};
    } else if (names.contains(path)) {
        Content& content = *names[path];
        for (const Change& change : std::exchange(content.since, {})) {
            if (change.cutsOff)
                content.synced.resize(static_cast<std::size_t>(change.at));
            else
                Apply(content.synced, change.at, change.bytes);
        }
    }
}

std::map<std::string, std::string> FaultyDisk::AfterPowerCut(unsigned seed) const
{
    std::mt19937 chance(seed);
    const auto isLost = [&] { return seed == 0 || (seed > 1 && chance() % 2 == 0); };
    const std::size_t last = names_.size() - 1;
    std::map<std::string, std::string> files;
    for (const auto& [name, content] : names_[seed == 0 ? 0 : seed == 1 ? last : chance() % (last + 1)]) {
        std::string& text = files[name] = content->synced;
        for (const auto& [at, bytes, cutsOff] : content->since) {
            if (cutsOff && !isLost())
                text.resize(static_cast<std::size_t>(at));
            for (std::size_t done = 0; done < bytes.size();) {
                const std::size_t place = static_cast<std::size_t>(at) + done;
                const std::string piece = bytes.substr(done, kSector - place % kSector);
                if (!isLost())
                    Apply(text, static_cast<std::int64_t>(place), piece);
                done += piece.size();
            }
        }
    }
    return files;
}

} // namespace vantro
