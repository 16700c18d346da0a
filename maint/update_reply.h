#pragma once

#include <string>
#include <string_view>

// Replies of the update actions; each is one compact JSON document.

// `description` is the version description as the server sent it. One that is not a JSON object, or has a
// member of the wrong type, gives a failed reply.
std::string BuildUpdateCheckReply(int request_id, std::string_view description);
std::string BuildUpdateCheckFailure(int request_id, std::string_view error);

// `error` is empty for success.
std::string BuildApplyUpdateReply(int request_id, std::string_view error);
