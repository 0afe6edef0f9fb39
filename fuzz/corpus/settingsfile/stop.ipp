[HalvectIpConfig]
[channel1]
transmitip=10.0.0.1
TransmitAudIp15=239.0.0.1
xTransmitAudIpZ=a=b
[channel0]
TransmitIp=b
