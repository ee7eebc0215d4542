#include "downloader/DownloadEngine.h"

#include "downloader/PropertyBag.h"
#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <list>
#include <sstream>
#include <sys/resource.h>

using namespace std::chrono_literals;

namespace vantro {
namespace {
using test::HttpServer;
using test::HttpText;
using Then = HttpServer::Then;
using Clock = std::chrono::steady_clock;

struct DownloadEngineTest : ::testing::Test {
    HttpServer server;
    test::TestPump pump;
    std::optional<AsyncRead> reader{std::in_place, [this] { pump.Post([this] { reader->Deliver(); }); },
        ReadLimits{.connect = 300ms, .silence = 1s, .size = 1 << 20, .redirects = 10}};
    std::string folder = MakeFolder();
    std::string log; // the events, " | " after each
    bool isOver = false;
    std::unique_ptr<DownloadEngine> engine = Make();

    ~DownloadEngineTest() override { std::filesystem::remove_all(folder); }

    static std::string MakeFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "downloadXXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        return name;
    }

    template <class... Parts>
    void Log(const Parts&... parts)
    {
        std::ostringstream line;
        ((line << parts), ...);
        log += line.str() + " | ";
    }

    std::unique_ptr<DownloadEngine> Make()
    {
        auto made = std::make_unique<DownloadEngine>(*reader, pump,
            DownloadHooks{{}, [this](const auto& title, const auto& text) { Log("Box ", title, ";", text); },
                [this](auto name) { Log("Changed ", name); }});
        DownloadEvents& e = made->Events;
        e.DLProgress = [this](float percent, int read, int total) {
            if (read == total || total == 0)
                last_ = std::to_string(percent).substr(0, 4) + " of " + std::to_string(total);
        };
        e.DLCanceled = [this] { Log("Canceled"), isOver = true; };
        e.DLError = [this](int number, const auto& text) { Log("Error ", number, " ", text); };
        e.DLComplete = [this](int bytes) { Log("Complete ", bytes, " after ", last_), isOver = true; };
        e.DLConnected = [this](const auto& address) { Log("Connected ", address); };
        e.DLRedirect = [this](const auto& target) { Log("Redirect ", target); };
        e.DLMIMEType = [this](const auto& type) { Log("MIMEType ", type); };
        e.DLFileSize = [this](int bytes) { Log("FileSize ", bytes); };
        e.DLBeginDownload = [this] { Log("Begin"); };
        made->SetSaveFilePath(folder);
        return made;
    }

    void Start(const std::string& address)
    {
        engine->SetFileURL(address);
        log.clear();
        last_.clear();
        isOver = false;
        EXPECT_TRUE(engine->BeginDownload());
        EXPECT_EQ(engine->BytesRead() + engine->FileSize() + (engine->Saved() ? 1 : 0), 0)
            << "of an earlier one";
    }
    std::string Download(const std::string& path)
    {
        Start(server.Address(path));
        pump.RunUntil([this] { return isOver; });
        return log;
    }
    // A whole transfer by another engine: whatever was to come late for the first has come by then.
    void LetOthersFinish()
    {
        server.Serve("/other", HttpText("200 OK", "other"));
        DownloadEngine other(*reader, pump);
        other.SetFileURL(server.Address("/other"));
        other.SetSaveFilePath(folder);
        EXPECT_TRUE(other.BeginDownload(true));
    }
    std::string FileText(const std::string& name)
    {
        std::ifstream file(folder + "/" + name, std::ios::binary);
        return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(none)";
    }
    void WriteFile(const std::string& name, const std::string& text)
    {
        std::ofstream(folder + "/" + name) << text;
    }

private:
    std::string last_;
};

TEST_F(DownloadEngineTest, TellsAWholeTransferAndReplacesALongerFile)
{
    WriteFile("a.xml", "an earlier, longer file");
    server.Serve("/f/a.xml", HttpText("200 OK", "hello", "Content-Type: text/xml\r\n"));
    EXPECT_EQ(Download("/f/a.xml"),
        "Connected 127.0.0.1 | MIMEType text/xml | FileSize 5 | Begin | Complete 5 after 1.00 of 5 | ");
    EXPECT_EQ(FileText("a.xml"), "hello");
    EXPECT_TRUE(engine->Saved());
    EXPECT_FALSE(engine->Downloading());
    EXPECT_EQ(engine->Percent(), 0);
    EXPECT_EQ(engine->BytesRead(), 5);
    EXPECT_EQ(engine->MIMEType(), "text/xml");
    server.Serve("/f/a.xml", "HTTP/1.1 200 OK\r\n\r\nsize unknown");
    EXPECT_EQ(
        Download("/f/a.xml"), "Connected 127.0.0.1 | FileSize 0 | Begin | Complete 12 after 0.00 of 0 | ");
    EXPECT_EQ(engine->MIMEType(), "");
}

TEST_F(DownloadEngineTest, TreatsARedirectAsItsTwoFlagsSay)
{
    server.Serve("/old.xml", HttpText("302 Found", "", "Location: /new.xml?v=2\r\n"));
    server.Serve("/new.xml?v=2", HttpText("200 OK", "new"));
    const std::string target = server.Address("/new.xml?v=2");
    const struct {
        bool fail, rename;
        std::string events, savedAs;
    } cases[] = {
        {true, true, "Connected 127.0.0.1 | Error 2 Redirected to " + target + " | Complete 0 after  | ", ""},
        {false, true, "Redirect " + target + " | Connected 127.0.0.1 | FileSize 3 | Begin | ", "new.xml?v=2"},
        {false, false, "Redirect " + target + " | Connected 127.0.0.1 | FileSize 3 | Begin | ", "old.xml"},
    };
    for (const auto& row : cases) {
        engine->SetFailOnRedirect(row.fail);
        engine->SetRenameOnRedirect(row.rename);
        EXPECT_EQ(engine->RenameOnRedirect(), row.rename && !row.fail);
        EXPECT_NE(Download("/old.xml").find(row.events), std::string::npos) << log;
        EXPECT_EQ(engine->RedirectFile(), target);
        EXPECT_EQ(engine->Saved(), !row.savedAs.empty());
        if (engine->Saved()) {
            EXPECT_EQ(engine->SaveFileName(), folder + "/" + row.savedAs);
            EXPECT_EQ(FileText(row.savedAs), "new");
        }
        LetOthersFinish();
        EXPECT_EQ(server.Hits("/new.xml?v=2"), &row - cases); // a refused redirect sent nothing there
        std::filesystem::remove(engine->SaveFileName());
    }
}

TEST_F(DownloadEngineTest, AFailureLeavesTheOldFileAndEndsWithErrorAndComplete)
{
    WriteFile("a", "old");
    std::filesystem::create_directory(folder + "/d");
    const std::string is = " [" + folder;
    const struct {
        const char* path;
        std::string subfolder, answer, error;
    } cases[] = {
        {"/a", "", HttpText("200 OK"), "Error 3 Zero bytes retrieved"},
        {"/a", "", HttpText("404 Not Found", "?"), "Error 99 404 Not Found"},
        {"/a", "/none", HttpText("200 OK", "x"), "Error 4 No such file or directory" + is + "/none/a]"},
        {"/d", "", HttpText("200 OK", "x"), "Error 4 Is a directory" + is + "/d]"},
        {"/", "", HttpText("200 OK", "x"), "Error 4 Is a directory" + is + "/]"},
        {"/q?/..", "", HttpText("200 OK", "x"), "Error 4 Is a directory" + is + "/..]"},
        {"/q?/.", "/d", HttpText("200 OK", "x"), "Error 4 Is a directory" + is + "/d/.]"},
        {"/a", "", HttpText("200 OK", std::string(9000, 'x')), "Error 4 File too large" + is + "/a]"},
    };
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 5000; // as a disk that is full half-way
    for (const auto& row : cases) {
        server.Serve(row.path, row.answer);
        engine->SetSaveFilePath(folder + row.subfolder);
        setrlimit(RLIMIT_FSIZE, &small);
        const std::string events = Download(row.path);
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_NE(events.find(row.error + " | Complete 0 after "), std::string::npos) << events;
        EXPECT_FALSE(engine->Saved());
        EXPECT_EQ(FileText("a"), "old");
        EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder), {}), 2) << row.error;
    }
    std::signal(SIGXFSZ, signalBefore);
}

TEST_F(DownloadEngineTest, ARefusedStartRaisesBothEventsAndThenTheMessageBox)
{
    engine->SetFileURL("gopher://vantro.example/a");
    log.clear();
    EXPECT_FALSE(engine->BeginDownload());
    EXPECT_EQ(log,
        "Error 1 Unsupported URL scheme | Complete 0 after  | "
        "Box bkDLControl Internal Error: 5;5Error: \r\nUnsupported URL scheme | ");
}

TEST_F(DownloadEngineTest, WaitingEndsWithTheTransferOrWithTheProgram)
{
    server.Serve("/good", HttpText("200 OK", "x"));
    server.Serve("/bad", HttpText("500 "));
    server.Serve("/stalled", "", Then::Stall);
    engine->SetFileURL(server.Address("/good"));
    EXPECT_TRUE(engine->BeginDownload(true));
    engine->SetFileURL(server.Address("/bad"));
    EXPECT_FALSE(engine->BeginDownload(true));

    engine->SetFileURL(server.Address("/stalled"));
    engine->Events.DLConnected = [this](const auto&) {
        EXPECT_FALSE(engine->BeginDownload(true)) << "a second one inside the wait";
        engine->CancelDownload();
    };
    EXPECT_FALSE(engine->BeginDownload(true));
    engine->Events.DLConnected = [this](const auto&) { engine.reset(); };
    EXPECT_FALSE(engine->BeginDownload(true));

    engine = Make();
    engine->SetFileURL(server.Address("/stalled"));
    pump.Post([this] { pump.Close(); });
    EXPECT_FALSE(engine->BeginDownload(true));
}

TEST_F(DownloadEngineTest, NothingFollowsACancel)
{
    engine->CancelDownload();
    server.Serve("/a", HttpText("200 OK", "x"));
    Start(server.Address("/a"));
    engine->CancelDownload();
    LetOthersFinish();
    EXPECT_EQ(log, "Canceled | ");

    engine->Events.DLFileSize = [this](int) { engine->CancelDownload(); };
    EXPECT_EQ(Download("/a"), "Connected 127.0.0.1 | Canceled | ");
    LetOthersFinish();
    EXPECT_EQ(log, "Connected 127.0.0.1 | Canceled | ");
    EXPECT_EQ(FileText("a"), "(none)");
}

TEST_F(DownloadEngineTest, AnyHandlerMayDestroyTheEngine)
{
    server.Serve("/a", HttpText("302 Found", "", "Location: /b\r\n"));
    server.Serve("/b", HttpText("200 OK", "x", "Content-Type: a/b\r\n"));
    server.Serve("/e", HttpText("404 "));
    const auto end
        = [this, farewell = std::string("what a handler holds must outlive its engine")](auto&&...) {
              engine.reset();
              Log(farewell);
              isOver = true;
          };
    const struct {
        const char* path;
        std::function<void(DownloadEvents&)> bind;
    } cases[] = {
        {"/a", [&](auto& e) { e.DLConnected = end; }},
        {"/a", [&](auto& e) { e.DLRedirect = end; }},
        {"/a", [&](auto& e) { e.DLMIMEType = end; }},
        {"/a", [&](auto& e) { e.DLFileSize = end; }},
        {"/a", [&](auto& e) { e.DLBeginDownload = end; }},
        {"/a", [&](auto& e) { e.DLProgress = end; }},
        {"/a", [&](auto& e) { e.DLComplete = end; }},
        {"/e", [&](auto& e) { e.DLError = end; }},
        {"/e", [&](auto& e) { e.DLComplete = end; }},
        {"/a",
            [&](auto& e) {
                e.DLCanceled = end, e.DLConnected = [this](auto&) { engine->CancelDownload(); };
            }},
    };
    for (const auto& row : cases) {
        engine = Make();
        engine->SetFailOnRedirect(false);
        row.bind(engine->Events);
        Download(row.path);
        EXPECT_EQ(engine, nullptr);
        const std::string then = log;
        LetOthersFinish();
        EXPECT_EQ(log, then) << &row - cases;
    }
    engine = Make();
    engine->SetFileURL("no address");
    engine->Events.DLError = end;
    EXPECT_FALSE(engine->BeginDownload());
}

TEST_F(DownloadEngineTest, ANewTransferMayBeginInAnErrorButNotInASuccess)
{
    server.Serve("/bad", HttpText("404 "));
    server.Serve("/good", HttpText("200 OK", "x"));
    engine->Events.DLError = [this](auto&&...) {
        EXPECT_FALSE(engine->Downloading());
        engine->SetFileURL(server.Address("/good"));
        EXPECT_TRUE(engine->BeginDownload());
    };
    int bytes = 0;
    engine->Events.DLComplete = [&](int count) {
        EXPECT_TRUE(engine->Downloading())
            << "the second one runs already; a success still counts as running";
        EXPECT_FALSE(engine->BeginDownload());
        bytes = count;
    };
    Start(server.Address("/bad"));
    pump.RunUntil([&] { return bytes == 1 && !engine->Downloading(); });
    EXPECT_EQ(FileText("good"), "x");
}

TEST_F(DownloadEngineTest, ASuccessThatIsCancelledInItsHandlerLeavesTheNextTransferAlone)
{
    server.Serve("/a", HttpText("200 OK", "first"));
    engine->Events.DLComplete = [this](int) {
        engine->CancelDownload();
        engine->Events.DLComplete = nullptr;
        pump.Post([this] { EXPECT_TRUE(engine->Downloading()); }); // before the second has had an event
        EXPECT_TRUE(engine->BeginDownload());
    };
    Start(server.Address("/a"));
    pump.RunUntil([this] { return !engine->Downloading(); });
    EXPECT_EQ(server.Hits("/a"), 2);
    EXPECT_TRUE(engine->Saved());
}

TEST_F(DownloadEngineTest, FourHostileServersAtOnceNeverHoldUpTheInterface)
{
    server.Serve("/stall", "", Then::Stall);
    server.Serve("/flood", "HTTP/1.1 200 OK\r\n\r\n", Then::Flood);
    server.Serve("/short", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nx", Then::Close);
    server.Serve("/loop", HttpText("302 ", "", "Location: /loop\r\n"), Then::Stall);
    std::list<DownloadEngine> engines;
    std::string errors;
    for (const char* path : {"/stall", "/flood", "/short", "/loop"}) {
        DownloadEngine& each = engines.emplace_back(*reader, pump);
        each.SetFileURL(server.Address(path));
        each.SetSaveFilePath(folder);
        each.SetFailOnRedirect(false);
        each.Events.DLError
            = [&errors, path](int number, const auto&) { errors += path + std::to_string(number); };
        EXPECT_TRUE(each.BeginDownload());
    }
    pump.RunUntil([&] { return std::ranges::none_of(engines, &DownloadEngine::Downloading); });
    for (const char* error : {"/stall99", "/flood99", "/short99", "/loop99"})
        EXPECT_NE(errors.find(error), std::string::npos) << errors;
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_LT(pump.LongestPass(), 100ms);
}

TEST_F(DownloadEngineTest, ClosingDuringAStalledDownloadTakesNoTime)
{
    server.Serve("/stalled", "HTTP/1.1 200 OK\r\n\r\nsome", Then::Stall);
    Start(server.Address("/stalled"));
    pump.RunUntil([this] { return engine->BytesRead() == 4; });
    const auto start = Clock::now();
    engine.reset();
    reader.reset();
    EXPECT_LT(Clock::now() - start, 500ms);
    EXPECT_EQ(log, "Connected 127.0.0.1 | FileSize 0 | Begin | ");
}

TEST_F(DownloadEngineTest, DerivesTheFileNameFromWhateverFollowsTheLastSlash)
{
    const struct {
        const char *address, *path, *name;
    } cases[] = {
        {"http://h.example/rss/x.rss", "/d", "/d/x.rss"},
        {"http://h.example/x.rss?a=b%2Fc", "/d/", "/d/x.rss?a=b%2Fc"},
        {"noslash", "/d", "/d/noslash"},
        {"a\\b", "/", "/a\\b"},
        {"", "/d", ""},
        {"http://h.example/x", "", ""},
    };
    for (const auto& row : cases) {
        DownloadEngine forward(*reader, pump);
        DownloadEngine backward(*reader, pump);
        forward.SetFileURL(row.address);
        forward.SetSaveFilePath(row.path);
        backward.SetSaveFilePath(row.path);
        backward.SetFileURL(row.address);
        EXPECT_EQ(forward.SaveFileName(), row.name);
        EXPECT_EQ(backward.SaveFileName(), row.name);
        const bool isComplete = *row.name != '\0';
        EXPECT_TRUE(isComplete || !forward.BeginDownload());
    }
}

TEST_F(DownloadEngineTest, KeepsItsSettingsInABag)
{
    PropertyBag bag;
    DownloadEngine(*reader, pump).WriteProperties(bag);
    EXPECT_TRUE(bag.Properties().empty());

    log.clear();
    engine->SetFileURL("http://h.example/x");
    engine->SetShowProgress(false);
    engine->SetFailOnRedirect(false);
    engine->SetRenameOnRedirect(false);
    EXPECT_EQ(
        log, "Changed FileURL | Changed ShowProgress | Changed FailOnRedirect | Changed RenameOnRedirect | ");
    engine->WriteProperties(bag);
    EXPECT_EQ(bag.Properties().size(), 5U);

    DownloadEngine loaded(*reader, pump);
    loaded.ReadProperties(bag);
    EXPECT_EQ(loaded.SaveFileName(), folder + "/x");
    EXPECT_FALSE(loaded.ShowProgress() || loaded.FailOnRedirect() || loaded.RenameOnRedirect());
    bag.WriteBool("failonredirect", true, true);
    bag.WriteBool("renameonredirect", true, true);
    loaded.ReadProperties(bag);
    EXPECT_FALSE(loaded.RenameOnRedirect());
    loaded.SetFailOnRedirect(false);
    EXPECT_TRUE(loaded.RenameOnRedirect()) << "the plain flag was kept";
}

} // namespace
} // namespace vantro
