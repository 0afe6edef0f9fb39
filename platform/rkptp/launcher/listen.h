/* SPDX-License-Identifier: MIT */
#ifndef RKPTP_LISTEN_H
#define RKPTP_LISTEN_H

/* The launcher's second task: to hear which masters announce themselves, and to tell on standard output. */

/* Opens one socket per interface that is bound to the PTP group: it gets what is sent to everybody and takes
   nothing away that is meant for another program. Needs the capability; 0, or -1 with errno. */
int openListeners(int count, char **interfaces);

/* Writes a line for each announce message, "eth1 0b02...", until standard output is closed. Needs no
 * capability. */
void tellAnnounces(int count, char **interfaces);

#endif /* RKPTP_LISTEN_H */
