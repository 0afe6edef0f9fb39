// SPDX-License-Identifier: MIT
#include "fake/ptpclient.h"

#include "rkptp.h"

PtpClient &ptpClient()
{
    static PtpClient client;
    return client;
}

namespace {

int lastClient = 0;

int number(PTP_HANDLE handle)
{
    return int(reinterpret_cast<intptr_t>(handle));
}

int answer(char *buffer, const QByteArray &text)
{
    qstrncpy(buffer, text.constData(), 64);
    return 0;
}

} // namespace

PTP_HANDLE rkPTPStart(const char *interfaceAddress)
{
    PtpClient &client = ptpClient();
    client.running = client.starts ? ++lastClient : 0;
    client.calls.append(QByteArray("start ") + interfaceAddress);
    return reinterpret_cast<PTP_HANDLE>(static_cast<intptr_t>(client.running));
}

void rkPTPEnd(PTP_HANDLE handle)
{
    PtpClient &client = ptpClient();
    if (number(handle) == client.running)
        client.running = 0;
    client.calls.append("end");
}

int rkPTPGetStatus(PTP_HANDLE handle, int)
{
    return handle && number(handle) == ptpClient().running ? 1 : RKPTP_NO_CLIENT;
}

int rkPTPSetTargetDomain(PTP_HANDLE, uint32_t domain)
{
    ptpClient().calls.append("domain " + QByteArray::number(domain));
    return 0;
}

int rkPTPSetTargetMacAddress(PTP_HANDLE, const char *identity)
{
    ptpClient().calls.append(QByteArray("target ") + identity);
    return 0;
}

int rkPTPGetVersion(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ptpClient().version);
}

int rkPTPGetDomain(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ptpClient().domain);
}

int rkPTPGetSourcePortID(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ptpClient().portId);
}

int rkPTPGetIPAddress(PTP_HANDLE, char *buffer)
{
    ptpClient().addressAsked = true;
    return answer(buffer, ptpClient().address);
}

int rkPTPGetGrandmasterID(PTP_HANDLE, char *buffer)
{
    return answer(buffer, ptpClient().grandmaster);
}

int rkPTPGetTime_Nano(PTP_HANDLE, uint64_t *seconds, uint32_t *nanoseconds)
{
    *seconds = ptpClient().seconds;
    *nanoseconds = ptpClient().nanoseconds;
    return 0;
}

int rkPTPGetOffset_Nano(PTP_HANDLE, int64_t *offset)
{
    if (!ptpClient().hasOffset)
        return RKPTP_NO_CLIENT;
    *offset = ptpClient().offset_ns;
    return 0;
}
