#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "service/peer_win.h"
#include "service/request.h"

// The destination of a request's answer.
struct Answer {
  // Sends one line (JSON, without its line feed). Drops whatever the peer does not read.
  std::function<void(const std::string& line)> send;
  // Signalled as soon as the peer has left.
  HANDLE peer_gone = nullptr;
};

// Decides about a request and carries it out. Returns after sending the answer's last line. Logs every
// change and every refusal in the event log.
void HandleRequest(const PeerRequest& request, const Peer& peer, const Answer& answer);
