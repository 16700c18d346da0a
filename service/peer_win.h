#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "base/handle_win.h"
#include "clean/junk.h"
#include "service/rules.h"

// The program at the other end of a pipe, and the user that it runs as.
struct Peer {
  PeerFacts facts;
  std::wstring user;     // "DOMAIN\name", or the SID as text
  std::wstring image;    // path of its executable
  KernelHandle token;    // for impersonation, at the level that the peer allows
  KernelHandle process;  // held, so that its ID stays valid while this lives
};

// Identifies the sender of the data read from the pipe (ImpersonateNamedPipeClient, OpenThreadToken,
// GetNamedPipeClientProcessId). Unknown facts keep the defaults of PeerFacts. Ends the process if this
// thread cannot get its own rights back.
Peer IdentifyPeer(HANDLE pipe);

// Lets the calling thread act with the peer's rights while this lives. Do not call anything that may
// load a library during that time: the peer can have drive letters of its own. Ends the process if the
// rights cannot be given back.
class ActingAs {
 public:
  explicit ActingAs(const Peer& peer);
  ~ActingAs();
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
  // Returns false if the peer allowed only identification. Nothing may be done in that case.
  explicit operator bool() const { return is_acting_; }

 private:
  bool is_acting_;
};

// The peer's own junk folders, found through its token and never through this program's environment.
// Empty if unknown. The temporary folder is one that may be emptied.
struct PeerFolders {
  std::wstring temporary;
  std::wstring local_app_data;
};
PeerFolders FindPeerFolders(const Peer& peer);
