// The one header that programs include.
#pragma once
#include "surface/cPixSheet.h"
