#pragma once
// Moved to the model: the deck writer trims blank lines too.
#include "model/body_lines.h"
