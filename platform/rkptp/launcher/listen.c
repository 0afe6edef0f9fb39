/* SPDX-License-Identifier: MIT */
#include "listen.h"

#include <arpa/inet.h>
#include <errno.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#define MAX_LISTENERS 8
#define PTP_GENERAL_PORT 320
#define ANNOUNCE_SIZE 64
#define ANNOUNCE_TYPE 0x0b

static const char kPtpGroup[] = "224.0.1.129";
static struct pollfd listeners[MAX_LISTENERS];

static int openListener(const char *interface)
{
    const int on = 1;
    const int off = 0;
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons(PTP_GENERAL_PORT)};
    struct ip_mreqn group = {.imr_ifindex = (int)if_nametoindex(interface)};
    inet_pton(AF_INET, kPtpGroup, &address.sin_addr);
    group.imr_multiaddr = address.sin_addr;
    if (fd < 0 || setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, interface, (socklen_t)strlen(interface)) != 0 ||
        setsockopt(fd, IPPROTO_IP, IP_MULTICAST_ALL, &off, sizeof off) != 0 ||
        bind(fd, (const struct sockaddr *)&address, sizeof address) != 0 ||
        setsockopt(fd, IPPROTO_IP, IP_ADD_MEMBERSHIP, &group, sizeof group) != 0)
        return -1;
    return fd;
}

int openListeners(int count, char **interfaces)
{
    for (int i = 0; i < count && i < MAX_LISTENERS; ++i) {
        listeners[i].fd = openListener(interfaces[i]);
        listeners[i].events = POLLIN;
        if (listeners[i].fd < 0)
            return -1;
    }
    return 0;
}

/* False when nobody reads any more. */
static int tellOne(int fd, const char *interface)
{
    unsigned char message[ANNOUNCE_SIZE];
    const ssize_t size = recv(fd, message, sizeof message, MSG_DONTWAIT);
    if (size != ANNOUNCE_SIZE || (message[0] & 0x0f) != ANNOUNCE_TYPE)
        return 1;
    /* Longer messages have options behind these bytes; the length field shall say what is told. */
    message[2] = 0;
    message[3] = ANNOUNCE_SIZE;
    printf("%s ", interface);
    for (int i = 0; i < ANNOUNCE_SIZE; ++i)
        printf("%02x", message[i]);
    return putchar('\n') != EOF && fflush(stdout) == 0;
}

void tellAnnounces(int count, char **interfaces)
{
    for (;;) {
        if (poll(listeners, (nfds_t)count, -1) < 0 && errno != EINTR)
            return;
        for (int i = 0; i < count; ++i)
            if (listeners[i].revents && !tellOne(listeners[i].fd, interfaces[i]))
                return;
    }
}
