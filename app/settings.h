#pragma once

#include <filesystem>

#include <nlohmann/json.hpp>

// The user's settings, one JSON document. Its keys belong to the page: the host merges, checks and adds
// nothing.

// Post the document of settings.json in the parent of the executable's folder, and replace it. UI thread.
void getSettings(int request_id);
void saveSettings(int request_id, nlohmann::json document);

// Returns the stored document, whatever it is, or the default document if there is no file or it is not
// JSON.
nlohmann::json LoadSettings(const std::filesystem::path& file);

// Overwrites the file in place: UTF-8, indented by 4, line feeds, none at the end. Ignores a file that
// cannot be opened or written. Throws nlohmann::json::type_error for text that is not UTF-8, leaving an
// empty file.
void SaveSettings(const std::filesystem::path& file, const nlohmann::json& document);
