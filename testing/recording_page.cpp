#include "testing/recording_page.h"

#include <mutex>
#include <utility>

#include "base/page.h"

namespace {

std::mutex g_mutex;
std::vector<std::string> g_texts;

std::vector<nlohmann::json> Parse(const std::vector<std::string>& texts) {
  std::vector<nlohmann::json> messages;
  for (const std::string& text : texts) messages.push_back(nlohmann::json::parse(text));
  return messages;
}

}  // namespace

void PostJsonToJs(std::string_view json) {
  const std::lock_guard lock(g_mutex);
  g_texts.emplace_back(json);
}

void SendConsoleLog(std::string_view message, std::string_view style) {
  PostJsonToJs(nlohmann::json{{"type", "console_log"}, {"message", message}, {"style", style}}.dump());
}

std::vector<std::string> TakePostedTexts() {
  const std::lock_guard lock(g_mutex);
  return std::exchange(g_texts, {});
}

std::vector<nlohmann::json> TakePostedMessages() {
  return Parse(TakePostedTexts());
}

std::string PostedReply(std::string_view type, int request_id, bool success, nlohmann::json members) {
  TakePostedTexts();
  PostReply(type, request_id, success, std::move(members));
  return TakePostedTexts().at(0);
}
