#pragma once
// Records and results of echo requests, as far as the module uses them.

#include "windef.h"

typedef ULONG IPAddr;  // in network byte order
typedef BYTE UCHAR;
typedef BYTE* PUCHAR;

typedef struct ip_option_information {
    UCHAR Ttl;  // 0: the system's own
    UCHAR Tos;
    UCHAR Flags;
    UCHAR OptionsSize;
    PUCHAR OptionsData;
} IP_OPTION_INFORMATION;
typedef IP_OPTION_INFORMATION* PIP_OPTION_INFORMATION;

typedef struct icmp_echo_reply {
    IPAddr Address;       // who has answered
    ULONG Status;         // IP_SUCCESS, or why there is no echo
    ULONG RoundTripTime;  // milliseconds
    USHORT DataSize;
    USHORT Reserved;
    LPVOID Data;
    struct ip_option_information Options;
} ICMP_ECHO_REPLY;

#define IP_SUCCESS               0
#define IP_BUF_TOO_SMALL         11001
#define IP_DEST_NET_UNREACHABLE  11002
#define IP_DEST_HOST_UNREACHABLE 11003
#define IP_DEST_PROT_UNREACHABLE 11004
#define IP_DEST_PORT_UNREACHABLE 11005
#define IP_NO_RESOURCES          11006
#define IP_PACKET_TOO_BIG        11009
#define IP_REQ_TIMED_OUT         11010
#define IP_BAD_ROUTE             11012
#define IP_TTL_EXPIRED_TRANSIT   11013
#define IP_TTL_EXPIRED_REASSEM   11014
#define IP_PARAM_PROBLEM         11015
#define IP_GENERAL_FAILURE       11050
