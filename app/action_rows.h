#pragma once

#include <tuple>
#include <utility>

#include "app/dispatcher.h"
#include "base/fields.h"
#include "base/worker.h"

// The two ways in which a row of the action table calls its function: with the request's ID and the
// named fields of its data, one per further parameter. A row that does not match its function does not
// compile.

// Calls the function immediately, on the dispatching (UI) thread.
template <auto kBody, FieldName... kFields>
void Inline(Request& request) {
  std::apply(kBody, ReadArguments<kFields...>(kBody, request.request_id, request.data));
}

// Reads the fields immediately and calls the function on a worker thread.
template <auto kBody, FieldName... kFields>
void Worker(Request& request) {
  StartWorker([arguments = ReadArguments<kFields...>(kBody, request.request_id, request.data)] {
    std::apply(kBody, arguments);
  });
}
