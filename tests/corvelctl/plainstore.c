/* SPDX-License-Identifier: MIT */
/*
 * A site's own configuration library: the original calls and no other. It holds one number, in memory, and
 * says on standard error what was written.
 */
#include "rkcfg.h"

#include <stdio.h>
#include <string.h>

static const char path[] = "KWX\\Config";
static const char name[] = "MaxIntChannels";
static uint32_t channels = 3;

int rkCFGValueString(void *handle, const char *keyPath, const char *valueName, char *buffer, uint32_t *size,
                     int write)
{
    (void)handle;
    (void)size;
    if (write)
        fprintf(stderr, "text %s %s %s\n", keyPath, valueName, buffer);
    return 1;
}

int rkCFGValueDword(void *handle, const char *keyPath, const char *valueName, uint32_t *value, int write)
{
    const int own = strcmp(keyPath, path) == 0 && strcmp(valueName, name) == 0;
    (void)handle;
    if (write)
        fprintf(stderr, "number %s %s %u\n", keyPath, valueName, *value);
    else if (own)
        *value = channels;
    return write || !own;
}

int rkCFGSave(void *handle, const char *configuration, int flags)
{
    (void)handle;
    (void)configuration;
    (void)flags;
    return 0;
}

int rkCFGClose(void *handle, int save)
{
    (void)handle;
    (void)save;
    return 0;
}

int rkCFGSetDefaultName(const char *utf8Name)
{
    return strcmp(utf8Name, "default") != 0;
}

int rkCFGGetDefaultName(char *buffer, uint32_t size)
{
    snprintf(buffer, size, "default");
    return 0;
}

int rkCFGForEach(void *handle, const char *keyPath, RKCFG_VISITOR visitor, void *context)
{
    (void)handle;
    if (!keyPath || strcmp(keyPath, path) == 0)
        visitor(context, path, name, NULL, 0, channels);
    return 0;
}
