#compdef callctl
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# What can be typed is known to callctl alone.
compadd -- ${(f)"$(callctl complete -- "${(j: :)words[1,CURRENT-1]} $PREFIX" 2>/dev/null)"}
