// Connections through the module itself, to the loopback server.

#include "hostkit/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <fstream>
#include <thread>

#include "apps/loopback/server.h"
#include "hostkit/child_process.h"
#include "hostkit/sites.h"
#include "support/dialog_user.h"
#include "support/temp_folder.h"

using namespace hostkit;
using namespace std::chrono_literals;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace {

std::string Bytes(std::size_t size, unsigned seed) {
    std::string text(size, '\0');
    for (char& byte : text) {
        seed = seed * 1103515245 + 12345;
        byte = static_cast<char>(seed >> 16);
    }
    return text;
}

std::vector<std::string> Names(const Listing& listing) {
    std::vector<std::string> names;
    for (const ListingEntry& entry : listing) {
        names.emplace_back(entry.name);
    }
    return names;
}

}  // namespace

class ConnectionTest : public ::testing::Test {
  protected:
    ConnectionTest() {
        std::filesystem::create_directories(folder / "served/pub/deep");
        WriteWhole(folder / "served/pub/file", content);
        host.LoadModule(MODULE_PATH);
        loopback::Options options;
        options.root = folder / "served";
        options.accounts["anna"] = "secret";
        options.accounts["anna@server"] = "secret";
        options.accounts["anna@guard@server"] = "secret@hidden";
        server = std::make_unique<loopback::Server>(options);
        request.host = "127.0.0.1:" + std::to_string(server->Port());
        request.directory = "/pub";
    }

    ConnectionOptions Logged() {
        ConnectionOptions options;
        options.console = [this](const std::string& line) {
            const std::lock_guard lock(mutex);
            log.push_back(line);
        };
        return options;
    }

    std::vector<std::string> Log() {
        const std::lock_guard lock(mutex);
        return log;
    }

    DownloadRequest Download() {
        DownloadRequest download;
        download.source = "file";
        download.destination = target;
        download.size = content.size();
        return download;
    }

    TempFolder folder;
    const std::string content = Bytes(300000, 1);
    const std::string target = folder / "local";
    std::unique_ptr<loopback::Server> server;
    ConnectRequest request;
    std::mutex mutex;
    std::vector<std::string> log;
    MessageLoop loop;
    Host host{loop, {}};
};

TEST_F(ConnectionTest, ConnectsListsAndDisconnects) {
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        const ConnectResult result = connection.Connect(request);
        ASSERT_TRUE(result.Connected()) << result.text;
        EXPECT_EQ(connection.Directory(), "/pub");
        const ListResult list = connection.List();
        EXPECT_TRUE(list.done);
        EXPECT_THAT(Names(list.entries), UnorderedElementsAre("..", "deep", "file"));
        EXPECT_TRUE(connection.List().done);
        EXPECT_THAT(server->Commands(), Contains("LIST").Times(1));
        connection.InvalidateListing();
        EXPECT_TRUE(connection.List(true).done);
        EXPECT_THAT(server->Commands(), Contains("LIST -la").Times(1));
        EXPECT_THAT(Log(), Contains(HasSubstr("230 ")));

        auto raw = LocalFile::Create(folder / "raw");
        EXPECT_EQ(connection.SaveRawListing(*raw), 0);
        EXPECT_EQ(raw->Close(), 0);
        EXPECT_THAT(ReadWhole(folder / "raw"), HasSubstr("file"));

        connection.Disconnect();
        EXPECT_FALSE(connection.Connected());
        EXPECT_THAT(server->Commands(), Contains("QUIT"));
        EXPECT_FALSE(connection.List().done);
        EXPECT_EQ(connection.Directory(), "");
        connection.Disconnect();
        EXPECT_TRUE(connection.Connect(request).Connected());
    });
    EXPECT_EQ(*host.SocketUseCounter(), 0u);
}

TEST_F(ConnectionTest, AFailedConnectionSaysWhyAndLeavesNothing) {
    server->Add({.command = "", .text = "421 busy"});
    RunJob(loop, [&] {
        Connection connection(host);
        const ConnectResult busy = connection.Connect(request);
        EXPECT_EQ(busy.outcome, ConnectOutcome::failed);
        EXPECT_EQ(busy.text, "421 busy");
        EXPECT_FALSE(connection.Connected());

        ConnectRequest refused = request;
        refused.host = std::string(80, 'h');
        EXPECT_THAT(connection.Connect(refused).text, HasSubstr("longer than 79"));
        refused.host = "host\r\nDELE x";
        EXPECT_FALSE(connection.Connect(refused).Connected());
        EXPECT_FALSE(connection.Connect({}).Connected());
    });
    EXPECT_EQ(server->ConnectionCount(), 1);
    EXPECT_EQ(*host.SocketUseCounter(), 0u);
}

TEST_F(ConnectionTest, AConnectionThatIsLostBehindItsLoginForGoodIsAFailedOne) {
    server->Add({.command = "PWD", .action = loopback::FaultAction::resetBefore});
    server->Add({.command = "USER", .occurrence = 2, .text = "421 too late"});
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        const ConnectResult lost = connection.Connect(request);
        EXPECT_EQ(lost.outcome, ConnectOutcome::failed);
        EXPECT_EQ(lost.text, "421 too late");
        EXPECT_TRUE(connection.Connect(request).Connected());
    });
}

TEST_F(ConnectionTest, AsksForAMissingPassword) {
    request.user = "anna";
    RunJob(loop, [&] {
        ConnectionOptions options;
        std::optional<std::string> answer;
        options.askPassword = [&](const std::string& name) {
            EXPECT_EQ(name, "127.0.0.1");
            return answer;
        };
        Connection connection(host, options);
        EXPECT_EQ(connection.Connect(request).outcome, ConnectOutcome::cancelled);
        answer = "wrong";
        EXPECT_EQ(connection.Connect(request).outcome, ConnectOutcome::failed);
        answer = "secret";
        EXPECT_TRUE(connection.Connect(request).Connected());
        request.password = "secret";
        answer.reset();
        EXPECT_TRUE(connection.Connect(request).Connected());
    });
}

TEST_F(ConnectionTest, ChangesDirectoryOrTellsWhyNot) {
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        ASSERT_TRUE(connection.Connect(request).Connected());
        const DirectoryResult checked = connection.CheckDirectory("deep");
        EXPECT_TRUE(checked.Done());
        EXPECT_EQ(checked.directory, "/pub/deep");
        EXPECT_EQ(connection.Directory(), "/pub");
        EXPECT_TRUE(connection.ChangeDirectory("/pub/deep").Done());
        EXPECT_EQ(connection.Directory(), "/pub/deep");
        EXPECT_TRUE(connection.ChangeDirectory("..").Done());
        EXPECT_EQ(connection.Directory(), "/pub");
        const DirectoryResult missing = connection.ChangeDirectory("missing");
        EXPECT_FALSE(missing.Done());
        EXPECT_THAT(missing.text, HasSubstr("550"));
        EXPECT_EQ(connection.Directory(), "/pub");

        // The check succeeds and the change does not, which no callback tells.
        server->Add({.command = "CWD", .occurrence = 2, .text = "550 gone meanwhile"});
        const auto start = std::chrono::steady_clock::now();
        const DirectoryResult gone = connection.ChangeDirectory("deep");
        EXPECT_FALSE(gone.Done());
        EXPECT_EQ(gone.text, "550 gone meanwhile");
        EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    });
}

TEST_F(ConnectionTest, DownloadsAndAsksAboutWhatIsThere) {
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        ASSERT_TRUE(connection.Connect(request).Connected());
        TransferOperation operation;
        u64 moved = 0;
        operation.progress = [&](const quennet::TransferRecord&, u32 bytes) { moved += bytes; };
        DownloadRequest download = Download();
        download.date = (2024 - 1980) << 9 | 5 << 5 | 17;
        EXPECT_TRUE(connection.Download(download, operation).Done());
        EXPECT_EQ(ReadWhole(target), content);
        EXPECT_EQ(moved, content.size());
        EXPECT_EQ(u64{operation.record.bytesDone}, content.size());

        WriteWhole(target, "mine");
        EXPECT_EQ(connection.Download(download, operation).outcome, TransferOutcome::leftOut);
        EXPECT_EQ(ReadWhole(target), "mine");

        WriteWhole(target, content.substr(0, 100000));
        operation.confirm = [&](const quennet::TransferItem& item, u32 resumeOffset) {
            EXPECT_EQ(resumeOffset, 100000u);
            EXPECT_EQ(item.destinationSize, 100000u);
            EXPECT_NE(item.destinationDate, 0);
            return ConfirmAnswer::goOn;
        };
        EXPECT_TRUE(connection.Download(download, operation).Done());
        EXPECT_EQ(ReadWhole(target), content);
        EXPECT_THAT(server->Commands(), Contains("REST 99488"));
    });
}

TEST_F(ConnectionTest, AFailedDownloadNamesItsSide) {
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        ASSERT_TRUE(connection.Connect(request).Connected());
        TransferOperation operation;
        operation.confirm = [](const quennet::TransferItem&, u32) { return ConfirmAnswer::goOn; };
        DownloadRequest download = Download();
        download.source = "missing";
        const TransferResult missing = connection.Download(download, operation);
        EXPECT_EQ(missing.outcome, TransferOutcome::failed);
        EXPECT_THAT(missing.text, HasSubstr("550"));
        EXPECT_FALSE(missing.localFailure);
        EXPECT_FALSE(std::filesystem::exists(target));

        download.source = "file";
        download.destination = "/dev/full";
        const TransferResult full = connection.Download(download, operation);
        EXPECT_EQ(full.outcome, TransferOutcome::failed);
        ASSERT_TRUE(full.localFailure);
        EXPECT_EQ(full.localFailure->code, ENOSPC);

        download.destination = folder / "no/such/folder";
        const TransferResult noFolder = connection.Download(download, operation);
        EXPECT_EQ(noFolder.outcome, TransferOutcome::failed);
        EXPECT_EQ(noFolder.localFailure->code, ENOENT);

        download.destination = std::string(260, 'x');
        EXPECT_THAT(connection.Download(download, operation).text, HasSubstr("longer than 259"));
        EXPECT_TRUE(connection.List().done);
    });
}

TEST_F(ConnectionTest, AStoredSiteAndAFirewallAreFilledInUnseen) {
    const std::string gate = request.host;
    const std::string book =
        "[Quennet]\nFTP=other\n[FTP]\nM1=other\nH1=nowhere\nM2=Mine\nH2=" + gate +
        "\nU2=anna\nD2=/pub/deep\nO2=0\nM3=open\nH3=" + gate + "\nU3=anonymous\nO3=9\n";
    ASSERT_TRUE(host.Settings().WriteSection("Other", "x=1\n"));
    const auto gated = [&](u32 type, const char* user, const char* password) {
        return FirewallRequest{type, gate, user, password};
    };
    struct {
        std::string site;
        std::string host;
        std::string user;
        std::string password;
        std::optional<FirewallRequest> firewall;
        std::string directory;  // empty: not connected
        std::string text;
    } cases[] = {
        {"MINE", "", "", "secret", {}, "/pub/deep", ""},
        {"mine", gate, "anonymous", "", {}, "/pub/deep", ""},
        // The mail address that its opening asks for is not given, but the password is.
        {"open", "", "", "me@home", {}, "/", ""},
        {"nobody", "", "", "", {}, "", "there is no site nobody"},
        {"", "server", "anna", "secret", gated(1, "", ""), "/", ""},
        {"mine", "server", "", "secret", gated(5, "guard", "hidden"), "/pub/deep", ""},
        {"", "server", "", "", gated(7, "", ""), "", "no firewall type 7"},
        {"", "server", "", "", FirewallRequest{}, "", "no firewall host"},
        {"", "server", "", "", gated(1, std::string(80, 'u').c_str(), ""), "", "longer than 79"},
    };
    const std::string before = host.Settings().Text();
    RunJob(loop, [&] {
        for (auto& row : cases) {
            const auto settings = std::make_shared<MemorySettings>(book);
            ConnectRequest wanted;
            wanted.site = row.site;
            wanted.host = row.host;
            wanted.user = row.user;
            wanted.password = row.password;
            wanted.firewall = row.firewall;
            wanted.settings = settings;
            Connection connection(host, Logged());
            const ConnectResult result = connection.Connect(wanted);
            EXPECT_EQ(result.Connected(), !row.directory.empty()) << result.text;
            EXPECT_EQ(connection.Directory(), row.directory);
            EXPECT_THAT(result.text, HasSubstr(row.text));
        }
    });
    EXPECT_EQ(host.Settings().Text(), before);
    for (const std::string& line : Log()) {
        EXPECT_THAT(line, Not(AnyOf(HasSubstr("secret"), HasSubstr("hidden"))));
    }
}

TEST_F(ConnectionTest, APersonAtTheDialogKeepsTheBook) {
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        for (int button : {2, 99}) {
            std::thread person([&] {
                const OpenDialog dialog = WaitForDialog(" FTP");
                dialog.SetField(14202, "site");
                dialog.SetField(14203, request.host);
                dialog.SetField(14302, "anna");
                dialog.SetField(15202, "secret");
                dialog.Press(button);
            });
            const ConnectResult result = connection.ConnectAsked(nullptr);
            person.join();
            EXPECT_EQ(result.outcome,
                      button == 2 ? ConnectOutcome::cancelled : ConnectOutcome::connected);
            EXPECT_EQ(StoredSites(host.Settings()).size(), button == 2 ? 0u : 1u);
        }
    });
    EXPECT_EQ(StoredSites(host.Settings())[0].user, "anna");
}

TEST_F(ConnectionTest, AnAbortedDownloadKeepsThePartialFile) {
    server->Add({.command = "RETR",
                 .occurrence = 0,
                 .action = loopback::FaultAction::stallData,
                 .bytes = 200000});
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        Connection other(host);
        ASSERT_TRUE(connection.Connect(request).Connected());
        ASSERT_TRUE(other.Connect(request).Connected());
        TransferOperation operation;
        std::atomic<bool> ended = false;
        std::atomic<u64> moved = 0;
        operation.progress = [&](const quennet::TransferRecord&, u32 bytes) { moved += bytes; };
        std::thread person([&] {
            while (moved < 200000 && !ended) {
                std::this_thread::sleep_for(10ms);
            }
            while (!ended) {
                connection.Abort();
                std::this_thread::sleep_for(100ms);
            }
        });
        const TransferResult result = connection.Download(Download(), operation);
        ended = true;
        person.join();
        EXPECT_EQ(result.outcome, TransferOutcome::failed);
        EXPECT_EQ(ReadWhole(target), content.substr(0, 200000));
        EXPECT_TRUE(other.List().done);

        // The abort is over: the next operation is not refused.
        server->ClearFaults();
        std::filesystem::remove(target);
        EXPECT_TRUE(connection.Download(Download(), operation).Done());
    });
}

TEST_F(ConnectionTest, TheEndOfAConnectionWaitsForItsDownload) {
    server->Add({.command = "RETR",
                 .action = loopback::FaultAction::slowData,
                 .bytes = 30000,
                 .time = 50ms});
    RunJob(loop, [&] {
        Connection connection(host, Logged());
        ASSERT_TRUE(connection.Connect(request).Connected());
        TransferOperation operation;
        std::atomic<u64> moved = 0;
        operation.progress = [&](const quennet::TransferRecord&, u32 bytes) { moved += bytes; };
        std::thread ending([&] {
            while (moved == 0) {
                std::this_thread::sleep_for(1ms);
            }
            connection.Disconnect();
        });
        EXPECT_TRUE(connection.Download(Download(), operation).Done());
        ending.join();
        EXPECT_EQ(ReadWhole(target), content);
        EXPECT_FALSE(connection.Connected());
    });
}

TEST_F(ConnectionTest, ManyConnectionsAtOnce) {
    RunJob(loop, [&] {
        std::vector<std::thread> threads;
        for (int number = 0; number < 8; ++number) {
            threads.emplace_back([&, number] {
                Connection connection(host, Logged());
                ConnectRequest own = request;
                own.passive = number % 2 == 0;
                ASSERT_TRUE(connection.Connect(own).Connected());
                TransferOperation operation;
                DownloadRequest download = Download();
                download.destination = folder / ("local" + std::to_string(number));
                EXPECT_TRUE(connection.Download(download, operation).Done());
                EXPECT_TRUE(connection.List().done);
                EXPECT_EQ(ReadWhole(download.destination), content);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    EXPECT_EQ(*host.SocketUseCounter(), 0u);
}

namespace {

bool WriteNumberMap(const char* path, const std::string& text) {
    return (std::ofstream(path) << text << std::flush).good();
}

/// Gives the process, which must have one thread, a disk of its own with room for 200,000 bytes.
bool MountSmallDisk(const std::string& folder) {
    const std::string user = "0 " + std::to_string(geteuid()) + " 1\n";
    const std::string group = "0 " + std::to_string(getegid()) + " 1\n";
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
           WriteNumberMap("/proc/self/setgroups", "deny") &&
           WriteNumberMap("/proc/self/uid_map", user) &&
           WriteNumberMap("/proc/self/gid_map", group) &&
           mount("none", folder.c_str(), "tmpfs", 0, "size=200k") == 0;
}

class SmallDiskUser : public ConnectionTest {
  public:
    explicit SmallDiskUser(const std::string& disk) : disk_(disk) {}

    void TestBody() override {
        RunJob(loop, [&] {
            Connection connection(host, Logged());
            ASSERT_TRUE(connection.Connect(request).Connected());
            TransferOperation operation;
            DownloadRequest download = Download();
            download.destination = disk_ + "/local";
            const TransferResult full = connection.Download(download, operation);
            EXPECT_EQ(full.outcome, TransferOutcome::failed);
            EXPECT_EQ(full.text, "The local file could not be written.");
            ASSERT_TRUE(full.localFailure);
            EXPECT_THAT(full.localFailure->Text(), HasSubstr("/local: No space left on device"));
            EXPECT_TRUE(connection.List().done);
        });
    }

  private:
    const std::string disk_;
};

TEST(SmallDiskTest, ADiskThatFillsUpDuringADownloadIsNamed) {
    constexpr int notMounted = 77;
    const TempFolder folder;
    ChildProcess child([&] {
        if (!MountSmallDisk(folder / "")) {
            return notMounted;
        }
        SmallDiskUser(folder / "").TestBody();
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    const int status = child.Wait();
    if (status == notMounted) {
        GTEST_SKIP() << "no disk can be mounted here";
    }
    EXPECT_EQ(status, 0);
}

}  // namespace
