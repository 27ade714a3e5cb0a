// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_VALUEWRITER_H
#define TESTS_VALUEWRITER_H

#include "bytereader.h"
#include "message.h"

#include <string>

/**
 * Writes the values of messages as the bytes of an input say: of every type, nested up to the limits of the bus,
 * empty and huge. What it writes is always transportable, for the bus throws out whoever sends what is not.
 */
class ValueWriter
{
public:
    explicit ValueWriter(ByteReader &bytes) : m_bytes(bytes) { }

    /** What is written from now on is for another message: there is room for it again. */
    void startMessage();

    /** Appends any number of arguments of any types. */
    void appendArguments(DBusMessage *message);

    /** Appends one argument of each type in the signature. */
    void appendArguments(DBusMessage *message, const std::string &signature);

    /** Writes a variant of this type, if there is room for one, where `depth` containers are open. */
    void writeVariant(DBusMessageIter *to, const std::string &wanted, int depth);

    /** Some single complete type. */
    std::string type();

    /** Text that the bus carries, from plain to what nobody expects. */
    std::string text();

    std::string path();

private:
    void write(DBusMessageIter *to, const std::string &type, int depth);
    void write(DBusMessageIter *to, DBusSignatureIter *type, int depth);
    void writeBasic(DBusMessageIter *to, int type);
    void writeArray(DBusMessageIter *to, DBusSignatureIter *type, int depth);
    void writeBytes(DBusMessageIter *to);
    void writeMembers(DBusMessageIter *to, DBusSignatureIter *type, int depth);
    std::string affordable(const std::string &type, int depth);
    int elements(const std::string &type);
    std::string typeInVariant();
    std::string deepType();
    std::string builtType(int levels);
    std::string builtText();

    ByteReader &m_bytes;
    int m_budget = 0; // values that may still be written: sizes that multiply would have no end
    int m_descriptors = 0; // that may still be written
    unsigned m_variantsToNest = 0;
};

#endif
