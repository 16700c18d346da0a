#pragma once

// Action: collects the status and posts it. On the UI thread; about 250 ms without a helper service.
void getStatus(int request_id);

// PushStatus of system/status.h on this machine, for a worker after each completed navigation; takes up to
// about 35 s.
void PushStatus();
