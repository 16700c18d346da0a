#pragma once

// Worker body: has the helper service create or remove the recurring start of Varnel.exe in this program's
// folder with "--silent-clean". Without the service the page is told, and the reply is a failure.
void toggleScheduleClean(int request_id, bool enabled);
