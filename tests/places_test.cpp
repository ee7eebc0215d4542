#include "platform/BuildSettings.h"
#include "platform/HostsFile.h"
#include "platform/Paths.h"
#include "platform/Resources.h"
#include "tests/support/FeedFixture.h"

#include <cstdlib>
#include <optional>

namespace vantro {

namespace fs = std::filesystem;

namespace {

// Sets an environment variable for the length of a test.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name)
    {
        if (const char* before = std::getenv(name))
            before_ = before;
        setenv(name, value, 1);
    }
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    std::optional<std::string> before_;
};

} // namespace

TEST(Paths, FollowTheBaseDirectoryRules)
{
    const Variable home("HOME", "/home/ann");
    const Variable data("XDG_DATA_HOME", "/data");
    const Variable config("XDG_CONFIG_HOME", "relative/is/ignored");
    const Variable cache("XDG_CACHE_HOME", "");
    EXPECT_EQ(DataFolder(), "/data/vantro");
    EXPECT_EQ(ConfigFolder(), "/home/ann/.config/vantro");
    EXPECT_EQ(CacheFolder(), "/home/ann/.cache/vantro");
}

TEST(RunFolder, IsPrivateGoesAtTheEndAndClearsUpAfterAKilledRun)
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
        std::ignore = temporary.Write(fs::relative(path / "page.htm", temporary.Path()).string(), "x");
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(RunFolder, SaysWhenItCannotBeMade)
{
    const TemporaryFolder temporary;
    const RunFolder folder(temporary.Write("a-file", "") / "vantro");
    EXPECT_NE(folder.Failure().find("cannot be used (Not a directory)"), std::string::npos)
        << folder.Failure();
}

TEST(HostsFile, GivesBuiltInAddressesForWhatIsMissingOrUnusable)
{
    const TemporaryFolder temporary;
    const auto read
        = [&](std::string_view text) { return ReadHostsFile(temporary.Write("vantro.ini", text)); };
    const std::string builtIn(kBuildSettings.hostXbins);
    struct Case {
        const char* name;
        std::string text;
        std::string xbins;
        const char* notice; // a part of it
    };
    for (const Case& c : {
             Case{"empty", "", builtIn, ""},
             {"set", "[Hosts]\nXBINS=http://127.0.0.1:8750/\n", "http://127.0.0.1:8750", ""},
             {"https", "[Hosts]\nXBINS=HTTPS://feeds.example\n", "HTTPS://feeds.example", ""},
             {"another scheme", "[Hosts]\nXBINS=file:///etc\n", builtIn, "XBINS"},
             {"no address", "[Hosts]\nXBINS=hello world\n", builtIn, "XBINS"},
             {"no host", "[Hosts]\nXBINS=http://\n", builtIn, "XBINS"},
             {"garbage", "\x01\xFF garbage\n", builtIn, "vantro.ini cannot be read"},
             {"another group", "[Other]\nXBINS=http://x.example\n", builtIn, ""},
         }) {
        const FeedHosts hosts = read(c.text);
        EXPECT_EQ(hosts.xbins, c.xbins) << c.name;
        EXPECT_EQ(hosts.notice.empty(), *c.notice == '\0') << c.name << ": " << hosts.notice;
        EXPECT_NE(hosts.notice.find(c.notice), std::string::npos) << c.name << ": " << hosts.notice;
    }
    EXPECT_EQ(ReadHostsFile(temporary.Path() / "missing.ini").notice, "");
    EXPECT_NE(ReadHostsFile(temporary.Path()).notice, "") << "a folder is no file";
}

TEST(ModMain, MakesTheVersionLineFromTheLastFourDigits)
{
    EXPECT_EQ(MakeVersionLine(1, 0, 229), "v1.0 build 0229");
    EXPECT_EQ(MakeVersionLine(2, 13, 7), "v2.13 build 0007");
    EXPECT_EQ(MakeVersionLine(1, 0, 123456), "v1.0 build 3456");
}

TEST(ModMain, SavesResourcesByteForByte)
{
    const TemporaryFolder temporary;
    const fs::path file = temporary.Write("page.htm", "something longer than nothing");
    const auto refused = SaveResourceToFile(file, "FRAMES", "XBINS", false);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->number, kFileAlreadyExists);
    EXPECT_FALSE(SaveResourceToFile(file, "FRAMES", "XBINS", true));
    EXPECT_EQ(ReadWholeFile(file), FindResource("XBINS", "FRAMES"));
    EXPECT_TRUE(SaveResourceToFile(file, "NO-SUCH", "XBINS", true));

    const auto error = WriteTextFile(temporary.Path() / "no/such/folder.htm", "x");
    ASSERT_TRUE(error);
    EXPECT_NE(error->sentence.find("no/such/folder.htm cannot be written: No such file"), std::string::npos);
    DeleteFileIfExists(temporary.Path());
    EXPECT_TRUE(fs::exists(temporary.Path())) << "a folder is no file";
}

} // namespace vantro
