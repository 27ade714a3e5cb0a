# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# What can be typed is known to callctl alone.
complete -c callctl -f -a '(callctl complete -- (commandline -cp) 2>/dev/null)'
