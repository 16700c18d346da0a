#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "base/handle_win.h"
#include "clean/junk.h"
#include "service/rules.h"

// The program at the other end of a pipe, and the user it runs for.
struct Peer {
  PeerFacts facts;
  std::wstring user;     // "DOMAIN\name", or the identifier in its text form
  std::wstring image;    // path of its executable
  KernelHandle token;    // what the peer has let the service see of it, for impersonation
  KernelHandle process;  // held, so that its number means the same process as long as this lives
};

// Finds out who has sent what was read from the pipe (ImpersonateNamedPipeClient, OpenThreadToken,
// GetNamedPipeClientProcessId). What cannot be found out stays as PeerFacts has it. Ends the process when this
// thread cannot get its own rights back.
Peer IdentifyPeer(HANDLE pipe);

// The calling thread acts with the peer's rights as long as this lives. Nothing that may load a library belongs
// in between: the peer can have drives of its own. Ends the process when the rights cannot be given back.
class ActingAs {
 public:
  explicit ActingAs(const Peer& peer);
  ~ActingAs();
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
  // False: the peer let itself be identified only. Nothing may be done then.
  explicit operator bool() const { return is_acting_; }

 private:
  bool is_acting_;
};

// Where the peer's own junk is, by its token and never by this program's environment; empty when unknown. The
// temporary folder is one that may be emptied.
struct PeerFolders {
  std::wstring temporary;
  std::wstring local_app_data;
};
PeerFolders FindPeerFolders(const Peer& peer);
