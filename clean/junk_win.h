#pragma once

#include "clean/junk.h"

// Measures all categories (GetTempPathW, SHGetFolderPathW, FindFirstFileW). A folder that is missing or
// cannot be read adds nothing.
JunkSizes MeasureJunkSizes();

// Empties the folders of the selected categories with the user's own rights; what cannot be deleted stays.
// False when memory ran out on the way.
bool CleanJunkCategories(const JunkFlags& selected);

// Worker bodies.

// Replies with the sizes. Where the helper service answers, its figures for protected folders count; where
// not, the page is told.
void getJunk(int request_id);

// Has the service clean, or cleans itself without one, and replies with the sizes afterwards.
void cleanJunk(const JunkSelection& selection);
