// SPDX-License-Identifier: MIT
// Many servers: handed over to corvel-fleet, a program and a package of its own, so that this one needs
// nothing of what speaks to a cluster.
#include "corvelctl/commandline.h"
#include "corvelctl/context.h"
#include "corvelctl/families.h"

#include <QFile>

#include <unistd.h>

namespace {

constexpr char kProgram[] = "corvel-fleet";

// Beside this program, else where the shell finds it.
QByteArray program()
{
    const QByteArray self = QFile::encodeName(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    const QByteArray beside = self.left(self.lastIndexOf('/') + 1) + kProgram;
    return access(beside.constData(), X_OK) == 0 ? beside : QByteArray(kProgram);
}

// What was said before the word "fleet" holds there too.
QByteArrayList words(const Context &context, const std::vector<std::string> &rest)
{
    QByteArrayList words{kProgram};
    const std::pair<bool, const char *> said[] = {
        {context.dryRun, "--dry-run"},
        {context.yes, "--yes"},
        {context.out.quiet, "--quiet"},
        {context.out.form == Output::Form::Document, "--json"},
        {context.out.form == Output::Form::Lines, "--lines"},
    };
    for (const auto &[set, word] : said) {
        if (set)
            words.append(word);
    }
    for (const std::string &word : rest)
        words.append(bytes(word));
    return words;
}

// Comes back only when there is no such program.
int handOver(const Context &context, const std::vector<std::string> &rest)
{
    QByteArrayList list = words(context, rest);
    std::vector<char *> arguments;
    for (QByteArray &word : list)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(program().constData(), arguments.data());
    return context.fail(ops::refused("corvel-fleet is not installed: the package of that name has it"));
}

} // namespace

int completeFleet(const Context &context, int argc, char **argv)
{
    return handOver(context, {argv + 1, argv + argc});
}

void addFleetCommand(Command &app, Context &context)
{
    app.addHandedOn(
        "fleet", "Many servers: status, conflicts, set, copy, check, ... (corvel-fleet)",
        "corvelctl fleet status\n  corvelctl fleet --help is this; corvel-fleet --help has the rest",
        [&context](const std::vector<std::string> &rest) { context.exit = handOver(context, rest); });
}
