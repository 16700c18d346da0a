#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "service/peer_win.h"
#include "service/request.h"

// Where a request's answer goes.
struct Answer {
  // Sends one line (JSON, without its line feed). What the peer does not take is dropped.
  std::function<void(const std::string& line)> send;
  // Signalled as soon as the peer has gone.
  HANDLE peer_gone = nullptr;
};

// Decides about a request and does it: the answer's last line is sent when this returns. Every change and every
// refusal is written into the event log.
void HandleRequest(const Request& request, const Peer& peer, const Answer& answer);
