// SPDX-License-Identifier: MIT
// tav-platform-load ADDRESS [CLIENTS [SECONDS]]: many clients at once on a running local platform with demo
// accounts. Each signs in, uploads 1 MiB, shares it by code, extracts it as somebody else, downloads it and
// compares the bytes.
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include <httplib.h>
#include <nlohmann/json.hpp>

using namespace tav;

namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

std::mutex guard;
std::map<std::string, std::vector<double>> milliseconds; // by step
std::atomic<int> faults = 0;

/// Runs one step of a round, times it, and returns the body of its reply.
template <typename Send>
std::string timed(const std::string& step, const Send& send)
{
    const auto begin = Clock::now();
    const httplib::Result result = send();
    const double took = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    const std::lock_guard lock(guard);
    milliseconds[step].push_back(took);
    if (!result || result->status != 200)
        throw std::runtime_error(step + ": " + (result ? result->body : httplib::to_string(result.error())));
    return result->body;
}

Json data(const std::string& body)
{
    return Json::parse(body).at("data");
}

std::string signIn(httplib::Client& http, const std::string& user, const std::string& cipherText)
{
    const std::string body = timed("sign in", [&] {
        return http.Post("/auth/oauth/token?grant_type=password",
            {{"Authorization", clientCredential().toStdString()}},
            "username=" + user + "&password=" + httplib::detail::encode_query_param(cipherText)
                + "&scope=server",
            "application/x-www-form-urlencoded");
    });
    return "Bearer " + Json::parse(body).at("access_token").get<std::string>();
}

void round(
    const std::string& address, const std::map<std::string, std::string>& accounts, const std::string& file)
{
    httplib::Client http(address);
    http.set_tcp_nodelay(true);
    http.set_read_timeout(60);
    const httplib::Headers alice{{"Authorization", signIn(http, "alice", accounts.at("alice"))}};
    const auto form = [&](const std::string& step, const std::string& path,
                          httplib::MultipartFormDataItems fields) {
        return data(timed(step, [&] { return http.Post("/project/" + path, alice, fields); }));
    };
    const auto text = [](const Json& value) {
        return value.is_string() ? value.get<std::string>() : value.dump();
    };

    const std::string project = text(form("create", "cloudProjectInfo/add",
        {{"sourceClient", "Load", "", ""}, {"projectTitle", "load", "", ""}, {"description", "", "", ""}}));
    const httplib::MultipartFormDataItems own{
        {"projectId", project, "", ""}, {"sourceClient", "Load", "", ""}};
    auto fields = own;
    fields.insert(fields.end(),
        {{"supportTypeId", "", "", ""}, {"typeFlag", "1", "", ""},
            {"file", file, "load.dgn", "application/octet-stream"}});
    const std::string id = text(form("upload", "cloudProjectShare/upload", fields).at("logicalId"));
    fields = own;
    fields.insert(fields.end(), {{"durationHours", "24", "", ""}, {"logicalIds", id, "", ""}});
    const std::string code = text(form("share", "cloudProjectShare/toAnonymous", fields));

    const httplib::Headers bob{{"Authorization", signIn(http, "bob", accounts.at("bob"))}};
    const std::string path = "/project/cloudProjectShare/";
    timed("extract",
        [&] { return http.Get(path + "extractByCode?extractionCode=" + code + "&sourceClient=Load", bob); });
    if (timed("download", [&] { return http.Get(path + "download?logicalId=" + id, bob); }) != file)
        throw std::runtime_error("download: other bytes came back");
}

} // namespace

int main(int argc, char* argv[])
{
    const std::string address = argc > 1 ? argv[1] : "http://127.0.0.1:48620";
    const int clients = argc > 2 ? std::atoi(argv[2]) : 200;
    const auto end = Clock::now() + std::chrono::seconds(argc > 3 ? std::atoi(argv[3]) : 60);

    std::map<std::string, std::string> accounts;
    for (const char* name : {"alice", "bob"})
        accounts[name] =
            aesEncryptText(QStringLiteral("demo-%1-1").arg(name), accountCipherKey(), accountCipherKey())
                .toStdString();

    std::atomic<int> rounds = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < clients; ++i)
        threads.emplace_back([&, i] {
            std::mt19937 random(unsigned(i) + 1);
            while (Clock::now() < end) {
                std::string file(1 << 20, '\0');
                std::generate(file.begin(), file.end(), [&] { return char(random()); });
                try {
                    round(address, accounts, file);
                    ++rounds;
                } catch (const std::exception& fault) {
                    ++faults;
                    std::fprintf(stderr, "%s\n", fault.what());
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    std::printf("%d clients, %d whole rounds, %d faults\n%-10s %8s %10s %10s\n", clients, rounds.load(),
        faults.load(), "step", "count", "median ms", "p99 ms");
    for (auto& [step, times] : milliseconds) {
        std::sort(times.begin(), times.end());
        std::printf("%-10s %8zu %10.1f %10.1f\n", step.c_str(), times.size(), times[times.size() / 2],
            times[times.size() * 99 / 100]);
    }
    return faults == 0 ? 0 : 1;
}
