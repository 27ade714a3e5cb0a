# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# What can be typed is known to callctl alone.
_callctl() {
    local line=${COMP_LINE:0:COMP_POINT} word before
    mapfile -t COMPREPLY < <(callctl complete -- "$line" 2>/dev/null)
    # Bash takes what stands before the last of these for words of their own.
    word=${line##*[[:space:]]}
    before=${word%"${word##*[:@=]}"}
    COMPREPLY=("${COMPREPLY[@]#"$before"}")
}
complete -F _callctl callctl
