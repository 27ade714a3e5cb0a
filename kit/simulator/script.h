// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SCRIPT_H
#define SIMULATOR_SCRIPT_H

#include <QtCore/QList>
#include <QtCore/QStringList>

/** One line of a script that says something. */
struct Statement
{
    int line = 0;
    QStringList words;
};

/** A script file, read and looked through before anything of it is done. */
class Script
{
public:
    /**
     * Reads a file, which messages call `name`; what is wrong with it, with name and line where there is one.
     * Empty if nothing.
     */
    QString load(const QString &file, const QString &name);

    const QList<Statement> &statements() const { return m_statements; }

    /** "NAME:LINE: ", to stand before what is said about a statement. */
    QString place(const Statement &statement) const;

private:
    QString readLine(const QString &text, int number);

    QString m_name;
    QList<Statement> m_statements;
};

#endif
