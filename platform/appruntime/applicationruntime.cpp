// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "applicationruntime.h"

ApplicationRuntime &ApplicationRuntime::instance()
{
    static ApplicationRuntime runtime;
    return runtime;
}
