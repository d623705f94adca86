// SPDX-License-Identifier: MIT
#pragma once

#include "host/linux/property_list/property_list.h"
