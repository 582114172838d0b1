#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <mutex>
#include <set>
#include <thread>

namespace {

using namespace devserver;
using namespace devserver::testing;
namespace fs = std::filesystem;

/// The first column of the only row, as a text.
std::string queried(const fs::path& database, const char* sql) {
    sqlite3* connection = nullptr;
    std::string result = "no database";
    if (sqlite3_open_v2(database.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr) ==
        SQLITE_OK) {
        sqlite3_exec(
            connection, sql,
            [](void* text, int, char** columns, char**) {
                *static_cast<std::string*>(text) = columns[0];
                return 0;
            },
            &result, nullptr);
    }
    sqlite3_close(connection);
    return result;
}

void runInThreads(int count, const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// A mapped name like "n-7-1".
std::string numberedName(const char* start, std::initializer_list<int> numbers) {
    std::string name = start;
    for (const int number : numbers) {
        name += '-';
        name += std::to_string(number);
    }
    return name;
}

std::string mappingOf(const std::string& name) {
    return hosts + '/' + testhost2 + "/hostmappings/" + name;
}

std::string lookUpOf(const std::string& name) {
    return hosts + "/hostmappings?mappedhostname=" + name;
}

TEST(Load, AHundredClientsAtOnceAreAllServed) {
    constexpr int clients = 100;
    constexpr int changesEach = 3;
    LocalServer server;
    std::atomic<int> failed{0};
    runInThreads(clients, [&](int number) {
        Client client(server.root(), server.address());
        client.limitTime(60'000);
        for (int i = 0; i < changesEach; ++i) {
            const std::string name = numberedName("n", {number, i});
            const Received changed = client.put(mappingOf(name), R"({"isShared":false})");
            const Received listed = client.get(lookUpOf(name));
            if (changed.status != 201 || listed.body.find(name) == std::string::npos) {
                ++failed;
            }
        }
    });
    EXPECT_EQ(failed, 0);
    server.stop();
    const fs::path database = server.root() / "hosts.db";
    EXPECT_EQ(
        queried(database, "SELECT count(*) FROM mappings WHERE mappedHostName GLOB 'n-*-*'"),
        std::to_string(clients * changesEach));
    EXPECT_EQ(
        queried(database, "SELECT count(*) FROM audit WHERE status=201"),
        std::to_string(clients * changesEach));
    EXPECT_EQ(queried(database, "PRAGMA integrity_check"), "ok");
}

TEST(Load, ChangesDoNotWaitForALargeListing) {
    const LocalServer server({}, 30'000);
    std::atomic<bool> listing{true};
    std::thread reader([&] {
        Client client(server.root(), server.address());
        client.limitTime(60'000);
        EXPECT_EQ(occurrences(client.get(hosts).body, "\"uuid\""), 30'000U);
        listing = false;
    });
    Client client(server.root(), server.address());
    int changes = 0;
    do {
        const Received changed =
            client.put(hosts + '/' + localHostId + "/comment", R"({"comment":"meanwhile"})");
        EXPECT_EQ(changed.status, 200);
        ++changes;
    } while (listing);
    reader.join();
    EXPECT_GT(changes, 3);
}

/// A change that was answered is there after the server was killed in the middle of others.
TEST(Load, NothingAnsweredIsLostWhenTheServerIsKilled) {
    const TemporaryFolder folder;
    const fs::path root = folder.path() / "root";
    const fs::path ready = folder.path() / "ready";
    const std::string address = ownAddress();
    const std::vector<std::string> arguments{"--root", root.string(),  "--listen",
                                             address,  "--ready-file", ready.string()};
    std::set<std::string> answered;
    for (int round = 0; round < 3; ++round) {
        Program program(folder.path(), arguments);
        ASSERT_TRUE(program.waitFor(ready)) << program.errors();
        fs::remove(ready);
        std::mutex mutex;
        const std::size_t before = answered.size();
        std::thread killer([&] {
            std::size_t now = before;
            for (int waited = 0; now < before + 40 && waited < 4000; ++waited) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                const std::lock_guard lock(mutex);
                now = answered.size();
            }
            program.signal(SIGKILL);
        });
        runInThreads(8, [&](int number) {
            Client client(root, address);
            for (int i = 0;; ++i) {
                const std::string name = numberedName("k", {round, number, i});
                const Received reply = client.put(mappingOf(name), R"({"isShared":false})");
                if (reply.status != 201) {
                    return;
                }
                const std::lock_guard lock(mutex);
                answered.insert(name);
            }
        });
        killer.join();
        EXPECT_EQ(program.wait(), 1000 + SIGKILL);
    }
    EXPECT_GE(answered.size(), 120U);
    Program program(folder.path(), arguments);
    ASSERT_TRUE(program.waitFor(ready)) << program.errors();
    const std::string host = Client(root, address).get(hosts + '/' + testhost2).body;
    for (const std::string& name : answered) {
        EXPECT_NE(host.find('"' + name + '"'), std::string::npos) << name;
    }
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(queried(root / "hosts.db", "PRAGMA integrity_check"), "ok");
}

}  // namespace
