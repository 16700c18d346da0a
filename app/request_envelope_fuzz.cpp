#include <cstdlib>
#include <utility>

#include "app/dispatcher.h"
#include "base/fields.h"
#include "base/page.h"
#include "base/text.h"
#include "testing/fuzz_target.h"
#include "testing/recording_page.h"

// For any text from the page, there is at most one reply, and it is valid JSON.
FUZZ_TARGET(request_envelope, bytes) {
  constexpr Action kActions[] = {
      {"echo",
       [](Request& it) {
         PostReply(it.action, it.request_id, true, {{"got", std::move(it.data)}});
       }},
      {"text",
       [](Request& it) { PostReply(FieldReader<std::string>::Read(it.data, "type"), it.request_id, true); }},
  };
  ActionDispatcher(kActions).Dispatch(Utf8ToWide(bytes));
  if (TakePostedMessages().size() > 1) std::abort();
}
