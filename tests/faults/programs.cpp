// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "programs.h"

QString Programs::voicecalld() { return QStringLiteral(VOICECALLD); }

QString Programs::plugin() { return QStringLiteral(RINGLET_PLUGIN); }

QString Programs::pathTaker() { return QStringLiteral(PATH_TAKER); }

QString Programs::simulator() { return QStringLiteral(RINGLET_SIM); }

QString Programs::faultyApplication() { return QStringLiteral(FAULTY_APPLICATION); }

QString Programs::limitsPage() { return QStringLiteral(LIMITS_PAGE); }
