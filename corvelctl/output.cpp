// SPDX-License-Identifier: MIT
#include "corvelctl/output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kSchema = 1;

bool wantsColour()
{
    static const bool wanted = isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR");
    return wanted;
}

void put(const QByteArray &text)
{
    fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
}

int columns(const QByteArray &text)
{
    const auto leads = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; };
    return static_cast<int>(std::count_if(text.begin(), text.end(), leads));
}

} // namespace

void Output::line(const QByteArray &text)
{
    if (!isText())
        return;
    put(text);
    fputc('\n', stdout);
}

void Output::flush()
{
    fflush(stdout);
}

void Output::write(const Json &item)
{
    const std::string text = item.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (form == Form::Document && !m_open)
        put("{\"schema\":" + QByteArray::number(kSchema) + ",\"command\":\"" + m_command +
            "\",\"items\":[\n");
    else if (form == Form::Document)
        put(",\n");
    m_open = true;
    fwrite(text.data(), 1, text.size(), stdout);
    if (form == Form::Lines)
        put("\n");
}

bool Output::finish()
{
    if (form == Form::Document && !m_command.isEmpty()) {
        if (!m_open)
            put("{\"schema\":" + QByteArray::number(kSchema) + ",\"command\":\"" + m_command +
                "\",\"items\":[");
        put("\n]}\n");
    }
    return fflush(stdout) == 0 && ferror(stdout) == 0;
}

QByteArray Output::coloured(const QByteArray &text, Colour colour) const
{
    static const char *const codes[] = {"", "\033[31m", "\033[32m", "\033[1m"};
    if (colour == Colour::Plain || !isText() || !wantsColour())
        return text;
    return codes[static_cast<int>(colour)] + text + "\033[0m";
}

void Output::note(const QByteArray &message) const
{
    if (!quiet)
        error(message);
}

void Output::error(const QByteArray &message)
{
    fflush(stdout); // in the order in which things happened
    const QByteArray line = "corvelctl: " + printable(message) + '\n';
    fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

void guardStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY); // takes the lowest free number
    }
}

QByteArrayList aligned(const std::vector<QByteArrayList> &rows)
{
    std::vector<int> widths;
    for (const QByteArrayList &row : rows) {
        widths.resize(std::max(widths.size(), static_cast<std::size_t>(row.size())));
        for (int at = 0; at < row.size(); ++at)
            widths[static_cast<std::size_t>(at)] =
                std::max(widths[static_cast<std::size_t>(at)], columns(row[at]));
    }
    QByteArrayList lines;
    for (const QByteArrayList &row : rows) {
        QByteArray line;
        for (int at = 0; at < row.size(); ++at) {
            line += row[at];
            if (at + 1 < row.size())
                line += QByteArray(widths[static_cast<std::size_t>(at)] - columns(row[at]) + 2, ' ');
        }
        lines.append(line);
    }
    return lines;
}
