#include "service/request.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

constexpr size_t kMaxMembers = 16;

// Receives the parser's events and stops at the first one that cannot belong to a request.
class RequestReader : public nlohmann::json_sax<json> {
 public:
  bool is_complete() const { return has_action_ && has_data_ && depth_ == 0; }
  PeerRequest request;

  bool start_object(size_t /*elements*/) override {
    const bool is_data = depth_ == 1 && key_ == "data" && !std::exchange(has_data_, true);
    return (depth_ == 0 || is_data) && ++depth_ > 0;
  }
  bool end_object() override { return --depth_ >= 0; }
  bool key(string_t& name) override {
    key_ = std::move(name);
    return true;
  }
  bool string(string_t& text) override {
    if (depth_ == 2) return Add(std::move(text));
    if (depth_ != 1 || key_ != "action" || std::exchange(has_action_, true)) return false;
    request.action = std::move(text);
    return true;
  }
  bool boolean(bool flag) override { return depth_ == 2 && Add(flag); }

  bool null() override { return false; }
  bool number_integer(number_integer_t /*value*/) override { return false; }
  bool number_unsigned(number_unsigned_t /*value*/) override { return false; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return false; }
  bool binary(binary_t& /*value*/) override { return false; }
  bool start_array(size_t /*elements*/) override { return false; }
  bool end_array() override { return false; }
  bool parse_error(size_t /*at*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

 private:
  bool Add(std::variant<bool, std::string> value) {
    return request.data.size() < kMaxMembers &&
           request.data.emplace(std::move(key_), std::move(value)).second;
  }

  std::string key_;
  int depth_ = 0;
  bool has_action_ = false, has_data_ = false;
};

template <typename Value, typename Members>
std::optional<Value> Member(const Members& members, std::string_view name) {
  const auto found = members.find(name);
  if (found == members.end() || !std::holds_alternative<Value>(found->second)) return std::nullopt;
  return std::get<Value>(found->second);
}

}  // namespace

std::optional<bool> PeerRequest::Flag(std::string_view name) const {
  return Member<bool>(data, name);
}

std::optional<std::string> PeerRequest::Text(std::string_view name) const {
  return Member<std::string>(data, name);
}

std::optional<PeerRequest> ParseRequest(std::string_view line) {
  RequestReader reader;
  if (line.size() > kMaxRequestBytes || !json::sax_parse(line, &reader) || !reader.is_complete())
    return std::nullopt;
  return std::move(reader.request);
}
