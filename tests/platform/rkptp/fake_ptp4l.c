/* SPDX-License-Identifier: MIT */
/* Stands in for ptp4l and prints what the launcher gave it: arguments, environment, descriptors,
 * capabilities. */
#include <dirent.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>

extern char **environ;

static void printDescriptors(void)
{
    DIR *folder = opendir("/proc/self/fd");
    int count = 0;
    while (folder && readdir(folder))
        ++count;
    /* "." and ".." and the folder itself are in the count. */
    printf("descriptors %d\n", count - 3);
    if (folder)
        closedir(folder);
}

static void printCapabilities(void)
{
    char line[200];
    FILE *status = fopen("/proc/self/status", "r");
    while (status && fgets(line, sizeof line, status))
        if (strncmp(line, "Cap", 3) == 0 || strncmp(line, "NoNewPrivs", 10) == 0)
            fputs(line, stdout);
    if (status)
        fclose(status);
}

int main(int argc, char **argv)
{
    int signal = 0;
    for (int i = 1; i < argc; ++i)
        printf("argument %s\n", argv[i]);
    for (char **one = environ; *one; ++one)
        printf("environment %s\n", *one);
    prctl(PR_GET_PDEATHSIG, &signal);
    printf("death signal %d\n", signal);
    printDescriptors();
    printCapabilities();
    return 0;
}
