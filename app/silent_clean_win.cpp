#include "app/silent_clean_win.h"

#include "clean/junk_win.h"

void RunSilentClean() {
  CleanJunkCategories({true, true, true, true, true, true, true});
}
