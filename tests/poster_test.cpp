// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The uploader with the real libcurl against a real HTTP server on loopback. The scoreboard's host
// is compiled in, so libcurl is led to the server by the proxy variable that it honours.

#include "poster.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <numeric>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "deployment.h"

namespace {

// Takes one form and sends `answer` as it stands.
class server {
public:
    explicit server(std::string answer) : answer_(std::move(answer)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(listener_, generic, size), 0);
        EXPECT_EQ(listen(listener_, 1), 0);
        EXPECT_EQ(getsockname(listener_, generic, &size), 0);
        const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        setenv("http_proxy", url.c_str(), 1);
        setenv("no_proxy", "", 1);
        thread_ = std::thread([this] { serve(); });
    }
    ~server() {
        shutdown(listener_, SHUT_RDWR);  // ends a wait for a form that never came
        thread_.join();
        close(listener_);
    }

    std::string request;

private:
    void serve() {
        const int peer = accept(listener_, nullptr, nullptr);
        std::vector<char> block(65536);
        for (ssize_t got = 1; got > 0 && !request.ends_with("--\r\n");) {
            got = recv(peer, block.data(), block.size(), 0);
            request.append(block.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
        }
        send(peer, answer_.data(), answer_.size(), MSG_NOSIGNAL);
        close(peer);
    }

    std::string answer_;
    int listener_ = socket(AF_INET, SOCK_STREAM, 0);
    std::thread thread_;
};

std::string http(const std::string& body, const char* status = "200 OK") {
    return std::string("HTTP/1.1 ") + status +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

struct outcome {
    int32_t code;
    std::optional<std::string> reply;
    std::string printed;
};

outcome post(const std::vector<uint8_t>& image = std::vector<uint8_t>(75)) {
    char* information = nullptr;
    testing::internal::CaptureStdout();
    const int32_t code = poster_send_replay(image.data(), image.size(), &information);
    outcome result{code, std::nullopt, testing::internal::GetCapturedStdout()};
    if (information != nullptr) {
        result.reply = information;
        std::free(information);
    }
    return result;
}

TEST(Poster, PostsTheImageAsAForm) {
    std::vector<uint8_t> image(300001);
    std::iota(image.begin(), image.end(), uint8_t{0});
    server board(http("ok\n"));
    EXPECT_EQ(post(image).code, CURLE_OK);
    EXPECT_EQ(board.request.substr(0, board.request.find("\r\n")),
              "POST http://" SCOREBOARD_HOST "/quorva/uploader/upload.php HTTP/1.1");
    const size_t body = board.request.find("\r\n\r\n") + 4;
    const std::string boundary =
        board.request.substr(body, board.request.find("\r\n", body) - body);
    const std::string expected =
        boundary + "\r\nContent-Disposition: form-data; name=\"submit\"\r\n\r\nUpload file\r\n" +
        boundary +
        "\r\nContent-Disposition: form-data; name=\"replay_file\"; filename=\"replay.rpl\"\r\n"
        "Content-Type: application/octet-stream\r\n\r\n" +
        std::string(image.begin(), image.end()) + "\r\n" + boundary + "--\r\n";
    EXPECT_TRUE(board.request.substr(body) == expected) << board.request.substr(0, 1000);
}

TEST(Poster, HandsBackAcceptableReplies) {
    const std::string long_line(4'000'000, 'x');
    const struct {
        std::string answer;
        std::optional<std::string> reply;
        const char* printed = "";
    } cases[] = {
        {http("ab\n"), "ab"},
        {http("ab"), "a"},
        {http("Rank 3\n\nof 99\n"), "Rank 3\n\nof 99"},
        {http("\n"), ""},
        {http(std::string("ab\0\xff", 4)), "a"},
        {http("gone\n", "404 Not Found"), "gone"},
        {http(long_line + "\n"), long_line},
        {http(""), std::nullopt},
        {http("\rab\n"), std::nullopt, "found invalid character 13 from index 0\n"},
        {http("a\tb\n"), std::nullopt, "found invalid character 9 from index 1\n"},
        {http("ab\x7f\n"), std::nullopt, "found invalid character 127 from index 2\n"},
        {http("ab\xc8\n"), std::nullopt, "found invalid character -56 from index 2\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer.substr(0, 100));
        const server board(c.answer);
        const outcome got = post();
        EXPECT_EQ(got.code, CURLE_OK);
        EXPECT_TRUE(got.reply == c.reply) << "got: " << got.reply.value_or("none").substr(0, 100);
        EXPECT_EQ(got.printed, c.printed);
    }
}

TEST(Poster, AFailedTransferHasNoReply) {
    for (const auto& [answer, code] :
         {std::pair{"", CURLE_GOT_NOTHING},
          {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nab\n", CURLE_PARTIAL_FILE}}) {
        const server board(answer);
        const outcome got = post();
        EXPECT_EQ(got.code, code);
        EXPECT_EQ(got.reply, std::nullopt);
    }
    EXPECT_EQ(post().code, CURLE_COULDNT_CONNECT);  // that server is gone
}

}  // namespace
