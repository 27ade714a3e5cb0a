// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiobackends.h"

#include "fakeaudio.h"

#include <functional>

using Factory = std::function<std::unique_ptr<AudioBackend>()>;

static const QMap<QString, Factory> &factories()
{
    static const QMap<QString, Factory> known = {
        {QStringLiteral("fake"), [] { return std::make_unique<FakeAudio>(); }},
    };
    return known;
}

QStringList AudioBackends::names() { return factories().keys(); }

std::unique_ptr<AudioBackend> AudioBackends::create(const QString &name)
{
    const Factory factory = factories().value(name);
    return factory ? factory() : nullptr;
}
