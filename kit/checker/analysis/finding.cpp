// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/finding.h"

#include <algorithm>

static constexpr std::size_t mostFollowing = 20;

std::string Finding::text() const { return what + ' ' + rule->texts.matters + ' ' + rule->texts.remedy; }

int Findings::indexOf(const Finding &finding) const
{
    for (std::size_t i = 0; i < m_findings.size(); ++i) {
        const Finding &known = m_findings[i];
        if (known.rule == finding.rule && known.application == finding.application && known.detail == finding.detail)
            return static_cast<int>(i);
    }
    return -1;
}

int Findings::causeOf(const Finding &finding) const
{
    for (std::size_t i = 0; i < m_findings.size(); ++i) {
        const Finding &known = m_findings[i];
        if (known.cause < 0 && known.application == finding.application && known.rule->isCauseOf(*finding.rule))
            return static_cast<int>(i);
    }
    return -1;
}

// A cause may be found behind what comes of it.
void Findings::adopt(int cause)
{
    const Finding &root = m_findings[static_cast<std::size_t>(cause)];
    for (int i = 0; i < cause; ++i) {
        Finding &known = m_findings[static_cast<std::size_t>(i)];
        if (known.cause < 0 && known.application == root.application && root.rule->isCauseOf(*known.rule))
            known.cause = cause;
    }
}

int Findings::add(Finding finding)
{
    const int known = indexOf(finding);
    if (known >= 0) {
        ++m_findings[static_cast<std::size_t>(known)].times;
        return known;
    }
    if (finding.cause < 0)
        finding.cause = causeOf(finding);
    m_findings.push_back(std::move(finding));
    const int index = static_cast<int>(m_findings.size()) - 1;
    if (m_findings.back().cause < 0) {
        adopt(index);
        if (onNew)
            onNew(m_findings.back());
    }
    return index;
}

void Findings::follow(int cause, const std::string &text)
{
    auto &follows = m_findings.at(static_cast<std::size_t>(cause)).follows;
    if (follows.size() < mostFollowing && std::find(follows.begin(), follows.end(), text) == follows.end())
        follows.push_back(text);
}

bool Findings::isAnyCounted(const std::function<bool(const Finding &)> &isWanted) const
{
    return std::any_of(m_findings.begin(), m_findings.end(), [&](const Finding &finding) {
        return finding.cause < 0 && finding.severity != Severity::Note && isWanted(finding);
    });
}
