#pragma once

#include <span>

#include "app/dispatcher.h"

// Returns every action that the page can request, in the order of comparison.
std::span<const Action> Actions();
