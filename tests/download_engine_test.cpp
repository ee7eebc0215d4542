#include "downloader/DownloadEngine.h"
#include "downloader/PropertyBag.h"
#include "platform/Files.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <csignal>
#include <map>
#include <sstream>
#include <sys/resource.h>

using namespace std::chrono_literals;

namespace vantro {
using test::HttpText;
using Then = test::HttpServer::Then;

struct DownloadEngineTest : ::testing::Test {
    test::HttpServer server;
    test::TestPump pump;
    std::optional<AsyncRead> reader{std::in_place, [this] { pump.Post([this] { reader->Deliver(); }); },
        ReadLimits{.connect = 300ms, .silence = 1s, .size = 1 << 20, .redirects = 10}};
    const TemporaryFolder temporary;
    const std::string folder = temporary.Path();
    std::string log; // the events, " | " after each
    std::map<std::string, std::function<void()>> inside; // what a handler does, by its event
    std::string last; // the event whose handler ended last
    std::unique_ptr<DownloadEngine> engine = Make();

    // A handler that tells its event and does what it is to do.
    auto Logged(const std::string& event)
    {
        return [this, event](const auto&... values) {
            std::ostringstream line;
            line << event;
            ((line << " " << values), ...);
            line << " | ";
            if (!log.ends_with(line.str())) // progress may come in any number of steps
                log += line.str();
            if (const auto act = inside.find(event); act != inside.end())
                act->second();
            last = event; // what a handler holds must outlive its engine
        };
    }
    std::unique_ptr<DownloadEngine> Make()
    {
        auto made = std::make_unique<DownloadEngine>(
            *reader, pump, DownloadHooks{{}, Logged("Box"), Logged("Changed")});
        made->SetSaveFilePath(folder);
        made->Events = {Logged("Progress"), Logged("Canceled"), Logged("Error"), Logged("Complete"),
            Logged("Connected"), Logged("Redirect"), {}, Logged("Type"), Logged("Size"), Logged("Begin")};
        return made;
    }
    bool Begin(const std::string& path, bool wait = false)
    {
        engine->SetFileURL(path.starts_with('/') ? server.Address(path) : path);
        log.clear();
        return engine->BeginDownload(wait);
    }
    std::string Download(const std::string& path)
    {
        Begin(path, true);
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
        return ReadWholeFile(temporary.Path() / name).value_or("(none)");
    }
};

TEST_F(DownloadEngineTest, TellsAWholeTransferAndReplacesALongerFile)
{
    temporary.Write("a.xml", "an earlier, longer file");
    server.Serve("/f/a.xml", HttpText("200 OK", "hello", "Content-Type: text/xml\r\n"));
    EXPECT_TRUE(Begin("/f/a.xml", true));
    EXPECT_EQ(log, "Connected 127.0.0.1 | Type text/xml | Size 5 | Begin | Progress 1 5 5 | Complete 5 | ");
    EXPECT_EQ(FileText("a.xml"), "hello");
    EXPECT_TRUE(engine->Saved() && !engine->Downloading());
    server.Serve("/f/a.xml", "HTTP/1.1 200 OK\r\n\r\nsizeless");
    EXPECT_EQ(Download("/f/a.xml"), "Connected 127.0.0.1 | Size 0 | Begin | Progress 0 8 0 | Complete 8 | ");
    EXPECT_EQ(engine->MIMEType(), "") << "of the earlier one";
    inside["Progress"] = [this] { engine->SetSaveFilePath("/dev/shm"); };
    server.Serve("/" + temporary.Path().filename().string(), HttpText("200 OK", "elsewhere"));
    EXPECT_TRUE(Begin("/" + temporary.Path().filename().string(), true)) << log;
    EXPECT_EQ(ReadWholeFile(engine->SaveFileName()), "elsewhere");
    DeleteFileIfExists(engine->SaveFileName());
    inside.clear();
    engine->SetSaveFilePath(folder);
    const std::string longest(255, 'n');
    server.Serve("/" + longest, HttpText("200 OK", "kept"));
    EXPECT_TRUE(Begin("/" + longest, true)) << log;
    EXPECT_EQ(FileText(longest), "kept");
}

TEST_F(DownloadEngineTest, TreatsARedirectAsItsTwoFlagsSay)
{
    PropertyBag bag;
    engine->WriteProperties(bag);
    EXPECT_EQ(bag.Properties().size(), 1U) << "the folder; the flags have their defaults, however they act";
    server.Serve("/old.xml", HttpText("302 Found", "", "Location: /new.xml?v=2\r\n"));
    server.Serve("/new.xml?v=2", HttpText("200 OK", "new"));
    const std::string target = server.Address("/new.xml?v=2");
    const std::string follows = "Redirect " + target + " | Connected 127.0.0.1 | Size 3 | ";
    int hits = 0;
    for (const auto& [fail, rename, events, savedAs, content] :
        {std::tuple{true, true, "Error 2 Redirected to " + target + " | Complete 0 | ", "old.xml", "(none)"},
            {false, true, follows, "new.xml?v=2", "new"}, {false, false, follows, "old.xml", "new"}}) {
        engine->SetFailOnRedirect(fail);
        engine->SetRenameOnRedirect(rename);
        EXPECT_NE(Download("/old.xml").find(events), std::string::npos) << log;
        EXPECT_EQ(engine->SaveFileName(), folder + "/" + savedAs);
        EXPECT_EQ(FileText(savedAs), content);
        LetOthersFinish();
        EXPECT_EQ(server.Hits("/new.xml?v=2"), hits++) << "a refused redirect sends nothing there";
    }
    engine->SetRenameOnRedirect(true);
    server.Serve("/plain.xml", HttpText("200 OK", "plain"));
    Download("/plain.xml");
    EXPECT_EQ(FileText("plain.xml"), "plain") << "no redirect, no other name";
}

TEST_F(DownloadEngineTest, AFailureLeavesTheOldFileAndEndsWithErrorAndComplete)
{
    temporary.Write("a", "old");
    std::filesystem::create_directory(folder + "/d");
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"/a", "", HttpText("200 OK"), "Error 3 Zero bytes retrieved"},
        {"/a", "", HttpText("404 Not Found", "?"), "Error 99 404 Not Found"},
        {"/a", "/none", HttpText("200 OK", "x"), "Error 4 No such file or directory [" + folder + "/none/a]"},
        {"/", "", HttpText("200 OK", "x"), "Error 4 Is a directory [" + folder + "/]"},
        {"/q?/..", "", HttpText("200 OK", "x"), "Error 4 Is a directory [" + folder + "/..]"},
        {"/a", "", HttpText("200 OK", std::string(9000, 'x')), "Error 4 File too large [" + folder + "/a]"},
        {"/a", "", HttpText("200 OK", std::string(6000, 'x')), "Error 4 File too large [" + folder + "/a]"},
        {"/d", "", HttpText("200 OK", "x"), "Error 4 Is a directory [" + folder + "/d]"},
    };
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{5000, before.rlim_max}; // as a disk that is full half-way
    setrlimit(RLIMIT_FSIZE, &small);
    for (const auto& [path, subfolder, answer, error] : cases) {
        server.Serve(path, answer);
        engine->SetSaveFilePath(folder + subfolder);
        EXPECT_TRUE(Download(path).ends_with(error + " | Complete 0 | ")) << log;
        EXPECT_FALSE(engine->Saved());
        EXPECT_EQ(FileText("a"), "old");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2) << error;
    }
    setrlimit(RLIMIT_FSIZE, &before);
}

TEST_F(DownloadEngineTest, ARefusedStartRaisesBothEventsAndThenTheMessageBox)
{
    EXPECT_FALSE(Begin("ftp://a.example/a"));
    EXPECT_EQ(log,
        "Error 1 Unsupported URL scheme | Complete 0 | "
        "Box bkDLControl Internal Error: 5 5Error: \r\nUnsupported URL scheme | ");
}

TEST_F(DownloadEngineTest, ANewTransferMayBeginInAnErrorButNotInASuccess)
{
    server.Serve("/good", HttpText("200 OK", "x"));
    inside["Error"] = [this] { EXPECT_TRUE(Begin("/good")); };
    inside["Complete"] = [this] { EXPECT_FALSE(engine->BeginDownload()) << "one runs, or has not ended"; };
    EXPECT_TRUE(Begin("/bad"));
    pump.RunUntil([this] { return !engine->Downloading(); });
    EXPECT_TRUE(log.ends_with("Complete 1 | ")) << log;
}

TEST_F(DownloadEngineTest, NothingFollowsACancel)
{
    engine->CancelDownload();
    server.Serve("/a", HttpText("200 OK", "x"));
    EXPECT_TRUE(Begin("/a"));
    engine->CancelDownload();
    LetOthersFinish();
    EXPECT_EQ(log, "Canceled | ");
    inside["Size"] = [this] {
        EXPECT_FALSE(engine->BeginDownload(true)) << "a second one inside the wait";
        engine->CancelDownload();
    };
    Download("/a");
    LetOthersFinish();
    EXPECT_EQ(log, "Connected 127.0.0.1 | Size 1 | Canceled | ");
    EXPECT_EQ(FileText("a"), "(none)");
    inside["Size"] = [this] { pump.Close(); };
    EXPECT_FALSE(Begin("/a", true)) << "the program closes meanwhile";
    engine.reset();
    reader.reset();
    for (const auto& left : std::filesystem::directory_iterator(folder)) // the last one may have come whole
        EXPECT_FALSE(left.path().filename().string().starts_with(".part-")) << left.path();
}

TEST_F(DownloadEngineTest, AnyHandlerMayDestroyTheEngine)
{
    server.Serve("/a", HttpText("302 Found", "", "Location: /b\r\n"));
    server.Serve("/b", HttpText("200 OK", "x", "Content-Type: a/b\r\n"));
    server.Serve("/e", HttpText("404 "));
    const std::pair<std::string, const char*> cases[] = {{"Connected", "/a"}, {"Redirect", "/a"},
        {"Type", "/a"}, {"Size", "/a"}, {"Begin", "/a"}, {"Progress", "/a"}, {"Complete", "/a"},
        {"Canceled", "/a"}, {"Error", "/e"}, {"Error", "no address"}};
    for (const auto& [event, path] : cases) {
        engine = Make();
        engine->SetFailOnRedirect(false);
        inside = {{event, [this] { engine.reset(); }}};
        if (event == "Canceled")
            inside["Connected"] = [this] { engine->CancelDownload(); };
        EXPECT_FALSE(Begin(path, true));
        const std::string then = log;
        EXPECT_EQ(engine, nullptr) << event;
        LetOthersFinish();
        EXPECT_EQ(log, then);
    }
}

} // namespace vantro
