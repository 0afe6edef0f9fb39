// SPDX-License-Identifier: MIT
//
// Which servers a command is for, as people write it behind --where. Terms with commas between; a server is
// chosen when one of them holds and none that begins with "!" does (only such terms: all the others). Several
// texts have to hold each. A term is
//   lon-*, paris/*                     a name, or site and name
//   alive, away                        its service gives a sign of life, or not
//   ptp=locked, version!=8.*           what kWords in where.cpp lists
//   0/video/rx.dst=239.1.*             a value of the configuration in use, as "corvelctl get" prints it
// with * ? [abc] in each text. Pure; any thread.
#ifndef CORVEL_FLEET_TOOL_WHERE_H
#define CORVEL_FLEET_TOOL_WHERE_H

#include "fleet/tool/siteview.h"

#include <functional>

namespace fleet {

class Where {
public:
    // A failure says which term is none, and what it may have been meant to be.
    static ops::Outcome<Where> parse(const QByteArrayList &texts);

    // A server whose values were not read has none of them.
    bool matches(const ServerView &server) const;
    // Other sites that a term names, with * and ? as they were written.
    const QByteArrayList &sites() const { return m_sites; }
    // What has to be read of each server before matches() can tell.
    bool needsDocuments() const { return m_needsDocuments; }
    bool needsLast() const { return m_needsLast; }
    // As it was written, for messages.
    QByteArray text() const { return m_text; }

private:
    using Test = std::function<bool(const ServerView &)>;
    struct Terms {
        std::vector<Test> any, none;
        bool match(const ServerView &server) const;
    };

    ops::Outcome<ops::Done> add(const QByteArray &text);
    ops::Outcome<Test> term(const QByteArray &text);
    ops::Outcome<Test> comparison(const QByteArray &left, const QByteArray &glob, bool equal);
    Test nameTest(const QByteArray &text);

    std::vector<Terms> m_all;
    QByteArrayList m_sites;
    QByteArray m_text;
    bool m_needsDocuments = false;
    bool m_needsLast = false;
};

} // namespace fleet

#endif
