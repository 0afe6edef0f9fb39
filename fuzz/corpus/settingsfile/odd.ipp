[HalvectIpConfig]
[channel12]
nmosoverride= -1 
J2kReceiveProgramPid=7
ReceiveInterface=eth1
TransmitAudIpÃ©=ÿ
