#pragma once

#include <filesystem>

#include <nlohmann/json.hpp>

// The user's settings, one JSON document. Its keys belong to the page: nothing is merged,
// checked or added here.

// Post the document of settings.json in the parent of the executable's folder, and replace it. UI thread.
void getSettings(int request_id);
void saveSettings(int request_id, nlohmann::json document);

// Returns the stored document, whatever it is; the default document if there is no file or it is not JSON.
nlohmann::json LoadSettings(const std::filesystem::path& file);

// Overwrites the file in place: UTF-8, indented by 4, line feeds, none at the end. A file that cannot be
// opened or written is no error. Throws nlohmann::json::type_error for text that is not UTF-8, and then
// leaves an empty file.
void SaveSettings(const std::filesystem::path& file, const nlohmann::json& document);
