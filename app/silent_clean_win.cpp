#include "app/silent_clean_win.h"

// There is no cleaner in this version yet: the switch is taken and the program ends. The cleaner is called
// here once it exists.
void RunSilentClean() {}
