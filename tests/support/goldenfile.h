// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_GOLDENFILE_H
#define TESTS_GOLDENFILE_H

#include <fstream>
#include <stdexcept>
#include <string>

/**
 * What a test must find, from a file beside it: its lines without those that begin with "#". Throws
 * std::runtime_error when the file cannot be read.
 */
inline std::string goldenText(const std::string &fileName)
{
    std::ifstream file(fileName);
    if (!file)
        throw std::runtime_error("cannot read " + fileName);
    std::string text;
    for (std::string line; std::getline(file, line);)
        if (line.empty() || line[0] != '#')
            text += line + "\n";
    return text;
}

#endif
