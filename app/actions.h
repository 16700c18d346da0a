#pragma once

#include <span>

#include "app/dispatcher.h"

// Everything that the page can ask for, in the order of comparison.
std::span<const Action> Actions();
