// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef MUTATION_MUTANT_H
#define MUTATION_MUTANT_H

#include <type_traits>

/**
 * Whether mutant `number` is the one that the environment variable RINGLET_MUTANT names. With RINGLET_SITES
 * set to a file's name, each number that was asked for is appended to the file, once, as 32 bits.
 */
bool mutant(int number);

template <typename T>
struct Emptied
{
    static T value() { return T(); }
};

template <typename T>
struct Emptied<T &>
{
    static T &value()
    {
        static std::remove_const_t<T> empty{};
        return empty;
    }
};

/** An empty value to stand where one of type T did; an object where there was an object, so that neither is copied. */
template <typename T>
T emptied()
{
    return Emptied<T>::value();
}

#endif
