#pragma once

#include <string>

#include <nlohmann/json.hpp>

// Returns the bytes that a step of a tool's script or a chunk of a service's answer writes: its "reply"
// as a line, or its "text" followed by the bytes of its "hex", "repeat" times.
inline std::string ScriptBytes(const nlohmann::json& step) {
  if (step.contains("reply")) return step["reply"].dump() + "\n";
  std::string bytes = step.value("text", "");
  const std::string hex = step.value("hex", "");
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  std::string repeated;
  for (int i = step.value("repeat", 1); i > 0; --i) repeated += bytes;
  return repeated;
}
