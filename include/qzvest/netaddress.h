/* Network addresses: text and network form, the name and the addresses of this host.
 *
 * An IPv4 address is the 32-bit network form, as in an in_addr: its bytes in memory are the octets in the order of the
 * text. All calls need the network state, which is there from the loading of the library to its unloading.
 *
 * Threads: any number may call. The C library's address text may stand in memory that all callers share; where it
 * does, concurrent callers of SMIPAddrNetworkToASCII can mix results. */
#ifndef QZVEST_NETADDRESS_H
#define QZVEST_NETADDRESS_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMIPAddrASCIIToNetwork - an address from text, as inet_addr (POSIX) reads it after some changes.
 * Each octet loses its leading zeros, and every "x" is dropped: 010.001.000.099 is 10.1.0.99, and 0x10 is ten.
 * An upper-case X stays and is an error. Zeros behind an "x" stay too, and make the octet octal.
 *   text     NUL-terminated; not changed
 *   address  takes the address; as it was after a failure
 * Returns
 *   SM_STATUS_OK            stored
 *   SM_STATUS_BAD_ARGUMENT  text or address is NULL
 *   SM_STATUS_NOT_ATTACHED  no network state
 *   SM_STATUS_NO_MEMORY     memory ran out
 *   SM_STATUS_FAILED        no address; also each other text of the address 0xFFFFFFFF than "255.255.255.255"
 *                           and "0xff.0xff.0xff.0xff" (in any case) */
SM_EXPORT uint32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address);

/* SMIPAddrNetworkToASCII - the dotted quad of an address.
 *   buffer  takes the text with its terminator; as it was after a failure. There is no call without one
 *   size    in: bytes at buffer, 16 are enough for all; out: bytes of the text with its terminator
 * Returns
 *   SM_STATUS_OK                written
 *   SM_STATUS_BAD_ARGUMENT      buffer or size is NULL
 *   SM_STATUS_BUFFER_TOO_SMALL  nothing written; size has the needed bytes
 *   SM_STATUS_NOT_ATTACHED      no network state; size as it was
 *   SM_STATUS_FAILED            the C library gave no text; size as it was */
SM_EXPORT uint32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size);

/* SMGetIPHostName, SMUCS2GetIPHostName - the name of this host.
 *   buffer  takes the name with its terminator, cut to what fits, and zeros behind it to its end; as UCS-2 the name
 *           is cut to 63 bytes and has to fit, and what is behind it stays
 *   size    in: bytes at buffer; out: bytes of the name with its terminator
 * Returns SM_STATUS_OK, SM_STATUS_BAD_ARGUMENT (buffer or size NULL; size 0, but not as UCS-2), SM_STATUS_NOT_ATTACHED;
 *   as UCS-2 also SM_STATUS_BUFFER_TOO_SMALL, with size as it was, and SM_STATUS_BAD_FORMAT (the name is no UTF-8) */
SM_EXPORT uint32_t SMGetIPHostName(char *buffer, uint32_t *size);
SM_EXPORT uint32_t SMUCS2GetIPHostName(uint16_t *buffer, uint32_t *size);

/* SMGetDNSSuffixNameName - what follows the first point of this host's canonical name, or the empty text. May ask a
 * name server, and wait for it.
 *   buffer  takes the suffix; NULL asks for its size alone
 *   size    in: bytes at buffer; out: bytes of the suffix with its terminator, also when they do not fit
 * Returns SM_STATUS_OK; SM_STATUS_BUFFER_TOO_SMALL (size is too small, whatever buffer is; nothing written); with size
 * as it was SM_STATUS_BAD_ARGUMENT (size NULL), SM_STATUS_NOT_ATTACHED, SM_STATUS_NO_MEMORY, SM_STATUS_FAILED (the name
 *   is not known) */
SM_EXPORT uint32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size);

/* SMInetAddrUTF8ToNetwork - an address of either family from text, as inet_pton (POSIX) reads it.
 *   family  SM_FAMILY_IPV4 or SM_FAMILY_IPV6
 *   buffer  takes 4 or 16 bytes
 *   size    in: bytes at buffer; out: bytes of the address, unchanged after a failure
 * Returns SM_STATUS_OK, SM_STATUS_BAD_ARGUMENT (a NULL), SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_NOT_ATTACHED,
 *   SM_STATUS_INVALID_PARAMETER (another family, no address) */
SM_EXPORT uint32_t SMInetAddrUTF8ToNetwork(uint16_t family, const char *text, void *buffer, uint32_t *size);

/* SMInetAddrNetworkToUTF8 - the text of an address, as inet_ntop (POSIX) writes it.
 *   address, length  4 bytes for SM_FAMILY_IPV4, 16 for SM_FAMILY_IPV6
 *   size             in: bytes at buffer; out: bytes of the text with its terminator, unchanged after a failure
 * Returns SM_STATUS_OK, SM_STATUS_BAD_ARGUMENT (a NULL), SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_NOT_ATTACHED,
 *   SM_STATUS_INVALID_PARAMETER (another family, a wrong length), SM_STATUS_FAILED (the C library gave no text) */
SM_EXPORT uint32_t SMInetAddrNetworkToUTF8(uint16_t family, const void *address, uint32_t length, char *buffer,
                                           uint32_t *size);

/* SMGetIPAddrStrList - the IPv4 addresses of this machine's running interfaces, but for loopback and point-to-point
 * ones. Needs the right to raw sockets.
 *   hostName  not looked at
 *   count     in: slots at list; out: addresses found, more than that too
 *   list      takes the addresses; NULL counts them
 * Returns SM_STATUS_OK, SM_STATUS_BAD_ARGUMENT (count NULL), SM_STATUS_BUFFER_TOO_SMALL (those that fit are written),
 *   and with count as it was SM_STATUS_NOT_ATTACHED, SM_STATUS_FAILED (no right to raw sockets, the system does not
 *   list its interfaces, no memory) */
SM_EXPORT uint32_t SMGetIPAddrStrList(const char *hostName, uint32_t *count, SMIPAddrSlot *list);

/* SMGetInetAddrStrList - the addresses of both families: those of IPv4 as above, then those of IPv6, global ones before
 * site-local and link-local ones. Those of IPv6 are the addresses of all interfaces but loopback ones and those without
 * ARP; there are none where the kernel has no IPv6. An interface with an index above 255 upsets their list: addresses,
 * also of others, may be missing.
 *   scope  SM_SCOPE_BOTH, SM_SCOPE_IPV4 or SM_SCOPE_IPV6
 *   count  in: records at list; out: addresses found, unless the call fails with another status than
 *          SM_STATUS_BUFFER_TOO_SMALL. For both families compare it: the status is that of IPv6 alone
 *   list   takes the addresses; NULL counts them, and more than count says are SM_STATUS_BUFFER_TOO_SMALL all the
 *          same. With too little room for those of IPv4 none of them is written
 * Returns SM_STATUS_OK, SM_STATUS_BAD_ARGUMENT (count NULL), SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_NOT_ATTACHED,
 *   SM_STATUS_INVALID_PARAMETER (another scope), SM_STATUS_NO_MEMORY, SM_STATUS_FAILED (no right to raw sockets, the
 *   system does not list its interfaces or has no memory for that, the last address of IPv6 is none) */
SM_EXPORT uint32_t SMGetInetAddrStrList(uint32_t scope, uint32_t *count, SMInetAddrRecord *list);

#ifdef __cplusplus
}
#endif

#endif
