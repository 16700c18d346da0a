#include "exec/tool_stream.h"

#include <utility>

#include "base/page.h"

void ToolStream::Status(std::string_view text) const {
  Post("status", {{"requestId", request_id_}, {"message", text}});
}

void ToolStream::Line(std::string_view text, nlohmann::json more) const {
  more.update({{"requestId", request_id_}, {"message", text}});
  Post("stdout", std::move(more));
}

void ToolStream::Exit(int64_t code, nlohmann::json more) const {
  more["requestId"] = request_id_;
  ExitUnnumbered(code, std::move(more));
}

void ToolStream::ExitUnnumbered(int64_t code, nlohmann::json more) const {
  more["code"] = code;
  Post("exit", std::move(more));
}

void ToolStream::Post(std::string_view stream_type, nlohmann::json members) const {
  members.update({{"type", type_}, {"streamType", stream_type}});
  PostJsonToJs(members.dump());
}
