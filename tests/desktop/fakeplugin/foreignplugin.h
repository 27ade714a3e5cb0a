// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FOREIGNPLUGIN_H
#define TESTS_FOREIGNPLUGIN_H

#include <QtCore/QObject>
#include <QtCore/QtPlugin>

/** A plug-in of some other host. */
class ForeignPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.foreign")
};

#endif
