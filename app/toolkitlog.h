// SPDX-License-Identifier: MIT
//
// Where the toolkit's own messages go. Standard error belongs to whoever started the program: nobody may
// read it, or it may be closed, and a program that writes there then waits for ever or is ended by
// SIGPIPE. So the messages go into the log, and a write to a closed pipe is an error like any other.
#ifndef CORVEL_TOOLKITLOG_H
#define CORVEL_TOOLKITLOG_H

// Sends the toolkit's messages to ErrOut and ignores SIGPIPE, for the whole process. Until
// toolkitStarted() they also go to standard error: a program that finds no display has to say so where
// it was started. User interface thread; call it before the application object is made.
void logToolkitMessages();

// From here on nothing is written to standard error, but for the last words of a fatal message.
void toolkitStarted();

#endif
