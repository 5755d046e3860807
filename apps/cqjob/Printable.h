#pragma once

#include "text/Printable.h"
