// SPDX-License-Identifier: MIT
//
// Style sheets of single controls that more than one file sets.
#ifndef CORVEL_DIALOG_STYLES_H
#define CORVEL_DIALOG_STYLES_H

// The field of the grandmaster identity, which shows its state by its ground.
constexpr char kEnabledStyle[] = "background-color: #131313;";
constexpr char kDisabledStyle[] = "background-color:#404040;";

#endif
