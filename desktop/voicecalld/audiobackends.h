// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_AUDIOBACKENDS_H
#define VOICECALLD_AUDIOBACKENDS_H

#include "audiobackend.h"

#include <QtCore/QStringList>

/** The audio backends that `--audio` can name. */
namespace AudioBackends {

QStringList names();

/** A new backend, or null when there is none of this name. */
std::unique_ptr<AudioBackend> create(const QString &name);

} // namespace AudioBackends

#endif
