// SPDX-License-Identifier: MIT
//
// What every command shares: the options that mean the same everywhere, the store, the result and the exit
// code. A family of commands is one file with one function,
//     void addXxxCommands(Command &app, Context &context);
// which families.h declares and main calls.
#ifndef CORVELCTL_CONTEXT_H
#define CORVELCTL_CONTEXT_H

#include "corvelctl/commandline.h"
#include "corvelctl/output.h"
#include "ops/outcome.h"
#include "ops/store.h"

#include <memory>
#include <string>
#include <vector>

enum Exit {
    Done = 0,
    Found = 1,       // something was found, or things differ
    Usage = 2,       // wrong use or wrong input; nothing was done
    StoreFailed = 3, // the store or the system refused
    Partly = 4,      // some of it was done
    Nothing = 5      // nothing to do, under --fail-if-none
};

struct Context {
    std::string configuration; // empty: the default one
    bool dryRun = false;
    bool yes = false;
    bool failIfNone = false;
    Output out;
    int exit = Done;

    ops::Outcome<ops::Store> open() const;
    // Tells people and gives the exit code for it.
    int fail(const ops::Failure &failure) const;
    int usage(const QByteArray &message) const;
    // Done, or Nothing when there was nothing to do and the user wants to know.
    int nothing(const QByteArray &message) const;
    // Writes a file that is the command's result; it is the same with and without JSON. A dry run looks
    // whether it could be written, and prints what goes to standard output.
    int writeFile(const QByteArray &path, const QByteArray &content);
};

// Standard input has one end: of two files "-" the second would be empty.
bool readsInputTwice(const std::vector<std::string> &files);
constexpr char kInputOnce[] = "standard input can be read once only; - stands for one of the files";

// Opens the configuration, reads all of it and lets work(store, values) do the rest.
template<class Work>
int withValues(const Context &context, const Work &work)
{
    auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto values = store->read();
    return values ? work(*store, *values) : context.fail(values.failure());
}

// One command. Options is a struct whose members the command line fills; run is called after all of them are
// read.
template<class Options>
Command addCommand(Command &parent, Context &context, const char *name, const char *does, const char *example,
                   void (*declare)(Command &, Options &), int (*run)(Context &, const Options &))
{
    auto options = std::make_shared<Options>();
    Command command = parent.add(name, does, example);
    declare(command, *options);
    command.whenNamed([&context, options, run, name] {
        context.out.begin(name);
        context.exit = run(context, *options);
    });
    return command;
}

inline QByteArray bytes(const std::string &text)
{
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

#endif
