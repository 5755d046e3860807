#pragma once

#include "text/NumberText.h"
