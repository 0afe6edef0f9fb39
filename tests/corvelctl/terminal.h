// SPDX-License-Identifier: MIT
//
// A program on a terminal of its own, with somebody who reads and types.
#ifndef TESTS_CORVELCTL_TERMINAL_H
#define TESTS_CORVELCTL_TERMINAL_H

#include <QByteArray>
#include <QByteArrayList>

#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

class Terminal {
public:
    // Variables as "NAME=value"; both of the program's outputs are the terminal.
    Terminal(const QByteArrayList &command, const QByteArrayList &variables)
    {
        m_pid = forkpty(&m_descriptor, nullptr, nullptr, nullptr);
        if (m_pid == 0)
            become(command, variables);
    }
    ~Terminal()
    {
        close(m_descriptor);
        if (m_pid > 0)
            end();
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // All that was shown up to this text; everything when the program ended before.
    QByteArray readUntil(const QByteArray &text)
    {
        while (!m_shown.contains(text) && readMore()) {
        }
        return m_shown;
    }
    void type(const QByteArray &keys)
    {
        if (write(m_descriptor, keys.constData(), static_cast<std::size_t>(keys.size())) != keys.size())
            abort();
    }
    // Reads to the end; the exit status, or -1.
    int end()
    {
        while (readMore()) {
        }
        int status = -1;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    const QByteArray &shown() const { return m_shown; }
    void forget() { m_shown.clear(); }

private:
    [[noreturn]] static void become(const QByteArrayList &command, const QByteArrayList &variables)
    {
        unsetenv("NO_COLOR");
        for (const QByteArray &variable : variables)
            putenv(strdup(variable.constData()));
        std::vector<char *> words;
        for (const QByteArray &word : command)
            words.push_back(strdup(word.constData()));
        words.push_back(nullptr);
        execv(words[0], words.data());
        _exit(127);
    }

    // False at the end, and when nothing comes for a minute.
    bool readMore()
    {
        pollfd one{m_descriptor, POLLIN, 0};
        char piece[4096];
        if (poll(&one, 1, 60000) <= 0)
            return false;
        const ssize_t got = read(m_descriptor, piece, sizeof piece);
        if (got > 0)
            m_shown.append(piece, static_cast<int>(got));
        return got > 0;
    }

    pid_t m_pid = -1;
    int m_descriptor = -1;
    QByteArray m_shown;
};

#endif
