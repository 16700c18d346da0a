#include <winsock2.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "base/text.h"
#include "maint/quick_actions.h"
#include "maint/quick_actions_win.h"
#include "maint/update_win.h"
#include "maint/version.h"
#include "testing/recording_page.h"
#include "testing/service_action_win.h"

namespace {

// Stand-in for the release server: a loopback HTTP server that answers one connection with the given bytes
// and closes it.
class StandInHttpServer {
 public:
  explicit StandInHttpServer(std::string response) : response_(std::move(response)) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    int size = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    url = L"http://127.0.0.1:" + std::to_wstring(ntohs(address.sin_port)) + L"/file";
    listen(listener_, 1);
    thread_ = std::thread([this] { ServeOne(); });
  }
  ~StandInHttpServer() {
    closesocket(listener_);
    thread_.join();
    WSACleanup();
  }

  std::wstring url;
  std::string request;  // complete after the download returned

 private:
  void ServeOne() {
    const SOCKET client = accept(listener_, nullptr, nullptr);
    if (client == INVALID_SOCKET) return;
    char block[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
      const int received = recv(client, block, sizeof block, 0);
      if (received <= 0) break;
      request.append(block, static_cast<size_t>(received));
    }
    send(client, response_.data(), static_cast<int>(response_.size()), 0);
    shutdown(client, SD_SEND);
    closesocket(client);
  }

  std::string response_;
  SOCKET listener_ = INVALID_SOCKET;
  std::thread thread_;
};

std::string Http(const std::string& status, const std::string& body, size_t length) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(length) +
         "\r\nConnection: close\r\n\r\n" + body;
}

class Download : public testing::Test {
 protected:
  Download() : path_(std::filesystem::temp_directory_path() / L"varnel-stahování.bin") {
    std::filesystem::remove(path_);
  }
  ~Download() override { std::filesystem::remove(path_); }

  std::string Content() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const std::filesystem::path path_;
};

TEST_F(Download, StoresWhateverBodyTheServerSends) {
  const std::string body(100'000, 'v');
  StandInHttpServer server(Http("200 OK", body, body.size()));
  EXPECT_TRUE(DownloadFile(server.url, path_.wstring()));
  EXPECT_EQ(Content(), body);
  const std::string agent =
      "User-Agent: Mozilla/5.0 (Windows NT 10.0; Win64; x64) Varnel/" + std::string(kCurrentVersion) + "\r\n";
  EXPECT_NE(server.request.find(agent), std::string::npos) << server.request;
  EXPECT_NE(server.request.find("no-cache"), std::string::npos) << server.request;

  StandInHttpServer error_page(Http("404 Not Found", "gone", 4));
  EXPECT_TRUE(DownloadFile(error_page.url, path_.wstring()));
  EXPECT_EQ(Content(), "gone");
}

TEST_F(Download, AConnectionThatBreaksLeavesWhatArrivedAndSucceeds) {
  StandInHttpServer server(Http("200 OK", "half", 1000));
  EXPECT_TRUE(DownloadFile(server.url, path_.wstring()));
  EXPECT_EQ(Content(), "half");
}

TEST_F(Download, FailsWithoutAServerOrAFile) {
  std::wstring nobody;
  {
    StandInHttpServer gone("");
    nobody = gone.url;
  }
  EXPECT_FALSE(DownloadFile(nobody, path_.wstring()));
  EXPECT_FALSE(std::filesystem::exists(path_));
  StandInHttpServer server(Http("200 OK", "x", 1));
  EXPECT_FALSE(DownloadFile(server.url, path_.wstring() + L"\\no such folder\\file"));
}

TEST_F(Download, ApplyingAnUpdateThatCannotBeFetchedKeepsTheProgram) {
  TakePostedTexts();
  downloadAndApplyUpdate(6, "nobody://127.0.0.1/VarnelSetup.exe");  // not even by a proxy
  EXPECT_EQ(TakePostedTexts(),
            std::vector<std::string>{
                R"({"error":"Failed to download update executable","requestId":6,"success":false,)"
                R"("type":"downloadAndApplyUpdate"})"});
}

std::vector<std::string> Posted(void (*action)(int)) {
  TakePostedTexts();
  action(8);
  std::vector<std::string> summary;
  for (const nlohmann::json& message : TakePostedMessages())
    summary.push_back(message.value("streamType", message.at("type").get<std::string>()) + "|" +
                      std::to_string(message.value("code", -1)) + "|" + message.value("message", ""));
  return summary;
}

constexpr char kFileCheckStatus[] =
    "status|-1|Spouštím test integrity systémových souborů a komponent Windows přes pomocnou službu...";

TEST(FileCheck, StreamsTheServiceAndSaysHowItEnded) {
  StandInService service({{"sfcVerify", Stream({{{"type", "stdout"}, {"message", "Ověřuji 40 %"}},
                                                {{"type", "note"}},
                                                {{"type", "exit"}, {"code", 2}}})}});
  EXPECT_EQ(Posted(sfcVerify),
            (std::vector<std::string>{kFileCheckStatus, "stdout|-1|Ověřuji 40 %",
                                      "exit|2|Test integrity systému dokončen s návratovým kódem 2."}));
}

TEST(FileCheck, WithoutAnExitRecordThereIsNoEnd) {
  StandInService service({{"sfcVerify", Stream({{{"type", "stdout"}, {"message", "x"}}})}});
  EXPECT_EQ(Posted(sfcVerify), (std::vector<std::string>{kFileCheckStatus, "stdout|-1|x"}));
}

TEST(FileCheck, WithoutTheServiceSaysSo) {
  EXPECT_EQ(Posted(sfcVerify), (std::vector<std::string>{kFileCheckStatus, "show_service_error_modal|-1|",
                                                         "exit|1|Pomocná služba neběží."}));
}

TEST(SafeMode, IsPreparedByTheService) {
  ExpectServiceAction({[] { safemodeReboot(9); },
                       "safemodeReboot",
                       "{}",
                       {{"success", true}},
                       BuildSafeModeReply(9, true),
                       BuildSafeModeReply(9, false)});
}

}  // namespace
