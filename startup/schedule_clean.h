#pragma once

// Has the helper service create or remove the recurring start of Varnel.exe in this program's folder
// with "--silent-clean". Without the service, tells the page so and replies with a failure. Worker body.
void toggleScheduleClean(int request_id, bool enabled);
