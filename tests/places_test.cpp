#include "base/Resources.h"
#include "base/modMain.h"
#include "feeds/HostsFile.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "platform/ProcessLimits.h"
#include "platform/SingleInstance.h"
#include "tests/support/FeedFixture.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <future>
#include <glib.h>
#include <optional>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

namespace vantro {

namespace fs = std::filesystem;

TEST(Paths, FollowTheBaseDirectoryRules)
{
    for (const auto& [name, value] : {std::pair{"HOME", "/home/ann"}, {"XDG_DATA_HOME", "/data"},
             {"XDG_CONFIG_HOME", "relative/is/ignored"}, {"XDG_CACHE_HOME", ""}})
        setenv(name, value, 1);
    EXPECT_EQ(DataFolder(), "/data/vantro");
    EXPECT_EQ(ConfigFolder(), "/home/ann/.config/vantro");
    EXPECT_EQ(CacheFolder(), "/home/ann/.cache/vantro");
    const TemporaryFolder temporary;
    setenv("XDG_DATA_HOME", temporary.Write("a-file", "").c_str(), 1);
    setenv("HOME", "relative", 1);
    MendFolderVariables();
    for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
        const fs::path named(std::getenv(variable));
        EXPECT_TRUE(named.is_absolute() && (fs::is_directory(named) || !fs::exists(named))) << variable;
    }
}

TEST(ProcessLimits, WhatIsLackingIsSaidAndTheSoftLimitOfFilesIsRaised)
{
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit low{48, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
    EXPECT_TRUE(WhatIsLacking({64, 4, 4})) << "the limit";
    EXPECT_TRUE(WhatIsLacking({32, 48, 4})) << "some are open";
    RaiseFileLimit();
    EXPECT_FALSE(WhatIsLacking({64, 48, 4, 4096}));
    EXPECT_TRUE(WhatIsLacking({64, 48, 4, SIZE_MAX / 2})) << "addresses";
    setrlimit(RLIMIT_NOFILE, &usual);
}

TEST(RunFolder, IsPrivateGoesAtTheEndClearsUpAfterAKilledRunAndSaysWhenItCannotBeMade)
{
    const TemporaryFolder temporary;
    const fs::path parent = temporary.Path() / "cache" / "vantro";
    fs::create_directories(parent / "run-left/sub");
    fs::path path;
    {
        const RunFolder running(parent);
        path = running.Path();
        EXPECT_EQ(running.Failure(), "");
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
        EXPECT_FALSE(fs::exists(parent / "run-left"));
        const RunFolder second(parent);
        EXPECT_TRUE(fs::exists(path)) << "the folder of a run that lives is left alone";
        EXPECT_FALSE(WriteTextFile(path / "page.htm", "x"));
    }
    EXPECT_FALSE(fs::exists(path));
    const std::string failure = RunFolder(temporary.Write("a-file", "") / "vantro").Failure();
    EXPECT_NE(failure.find("cannot be used (Not a directory)"), std::string::npos) << failure;
}

TEST(RunFolder, IsLeftAloneFromTheInstantWhenItIsMade)
{
    const TemporaryFolder temporary;
    const auto run = [&] {
        int lost = 0;
        for (int i = 0; i < 500; ++i)
            lost += fs::exists(RunFolder(temporary.Path()).Path()) ? 0 : 1;
        return lost;
    };
    auto other = std::async(std::launch::async, run);
    EXPECT_EQ(run() + other.get(), 0);
}

TEST(HostsFile, GivesBuiltInAddressesForWhatIsMissingOrUnusable)
{
    const TemporaryFolder temporary;
    const std::string builtIn(BuiltInHost(modXBINS));
    for (const auto& [name, text, xbins, partOfNotice] : {
             std::tuple{"empty", "", builtIn, ""},
             {"set", "[Hosts]\nXBINS=http://127.0.0.1:8750/\n", "http://127.0.0.1:8750", ""},
             {"https", "[Hosts]\nXBINS=HTTPS://feeds.example\n", "HTTPS://feeds.example", ""},
             {"another scheme", "[Hosts]\nXBINS=file:///etc\n", builtIn, "XBINS"},
             {"no host", "[Hosts]\nXBINS=http://\n", builtIn, "XBINS"},
             {"garbage", "\x01\xFF garbage\n", builtIn, "vantro.ini cannot be read"},
             {"trailing blanks", "[Hosts]\nXBINS=http://x.example/ \t\n", "http://x.example", ""},
             {"a query", "[Hosts]\nXBINS=http://x.example/?q=\n", builtIn, "has a query or a fragment"},
             {"no UTF-8", "[Hosts]\nXBINS=http://\xFF.example\n", builtIn, "XBINS cannot be read"},
             {"two of them", "[Hosts]\nXBINS=a\nVANTRO=http://b#\n", builtIn, "(\"a\") is no http address"},
             {"two of them", "[Hosts]\nXBINS=a\nVANTRO=http://b#\n", builtIn, "VANTRO (\"http://b#\")"},
             {"another group", "[Other]\nXBINS=http://x.example\n", builtIn, ""},
         }) {
        const FeedHosts hosts = ReadHostsFile(temporary.Write("vantro.ini", text));
        EXPECT_EQ(hosts.addresses.at(&modXBINS), xbins) << name;
        EXPECT_EQ(hosts.notice.empty(), *partOfNotice == '\0') << name << ": " << hosts.notice;
        EXPECT_NE(hosts.notice.find(partOfNotice), std::string::npos) << name << ": " << hosts.notice;
    }
    EXPECT_NE(ReadHostsFile(temporary.Path()).notice, "") << "a folder is no file";
    EXPECT_EQ(ReadHostsFile(temporary.Path() / "missing.ini").notice, "");
    const fs::path pipe = temporary.Path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_NE(ReadHostsFile(pipe).notice, "") << "nobody writes to it";
    EXPECT_FALSE(FileExists(pipe));
}

TEST(Sites, ShareNoKeyHaveTheHostOfTheirOwnAndNumberTheirStripsInTheOrderOfTheList)
{
    const TemporaryFolder temporary;
    std::set<std::string_view> keys;
    for (const Option& option : kGeneralOptions)
        keys.insert({option.name, option.control});
    int strips = 0;
    for (const Site* site : Sites()) {
        for (const auto key : {site->identifier, site->prefix, site->feedPath, site->page->shown})
            EXPECT_TRUE(keys.insert(key).second) << key;
        for (const Option& option : site->optionFrame.options)
            EXPECT_TRUE(keys.insert(option.name).second && keys.insert(option.control).second) << option.name;
        EXPECT_EQ(site->strip.value_or(strips), strips) << site->identifier;
        strips += site->strip ? 1 : 0;
        const fs::path ini
            = temporary.Write("ini", "[Hosts]\n" + std::string(site->identifier) + "=http://a");
        EXPECT_EQ(ReadHostsFile(ini).addresses.at(site), "http://a");
    }
}

// The program itself, in a thread of its own; what is there meanwhile has its event loop here.
bool StartsAsFirst(const fs::path& folder, const std::function<void()>& meanwhile)
{
    auto start = std::async(std::launch::async, [&] { return SingleInstance(folder, {}).IsFirst(); });
    while (start.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        g_main_context_iteration(nullptr, FALSE);
        meanwhile();
    }
    return start.get();
}

TEST(SingleInstance, TellsTheFirstOfEveryOtherStartAndLetsItEnd)
{
    const TemporaryFolder folder;
    int told = 0;
    std::optional<SingleInstance> first;
    first.emplace(folder.Path() / "a", [&] { return ++told < 3; });
    const auto end = [&] {
        if (told == 3)
            first.reset();
    };
    EXPECT_TRUE(first->IsFirst() && StartsAsFirst(folder.Path() / "b", end));
    EXPECT_FALSE(StartsAsFirst(folder.Path() / "a", end) || StartsAsFirst(folder.Path() / "a", end));
    EXPECT_EQ(told, 2);
    EXPECT_TRUE(StartsAsFirst(folder.Path() / "a", end)) << "what is ending is waited for";
    first.emplace(folder.Path() / "a", nullptr);
    EXPECT_FALSE(SingleInstance(folder.Path() / "a", {}).IsFirst())
        << "a program that is stopped holds its store";
}

TEST(ModMain, MakesTheVersionLineFromTheLastFourDigits)
{
    EXPECT_EQ(MakeVersionLine(2, 13, 7), "v2.13 build 0007");
    EXPECT_EQ(MakeVersionLine(1, 0, 123456), "v1.0 build 3456");
}

TEST(ModMain, SavesResourcesByteForByte)
{
    const TemporaryFolder temporary;
    const fs::path file = temporary.Write("page.htm", "something longer than nothing");
    EXPECT_EQ(SaveResourceToFile(file, "FRAMES", "XBINS", false).value().number, kFileAlreadyExists);
    EXPECT_FALSE(SaveResourceToFile(file, "FRAMES", "XBINS", true));
    EXPECT_EQ(ReadWholeFile(file), FindResource("XBINS", "FRAMES"));
    DeleteFileIfExists(temporary.Path());
    EXPECT_TRUE(fs::exists(temporary.Path())) << "a folder is no file";
}

} // namespace vantro
