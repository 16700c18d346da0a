#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

// Actions on settings.json in the parent of the executable's folder. UI thread.
void getSettings(int32_t request_id);
void saveSettings(int32_t request_id, nlohmann::json document);
