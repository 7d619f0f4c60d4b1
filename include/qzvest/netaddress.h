/* IPv4 addresses as text.
 *
 * An address is the 32-bit network form, as in an in_addr: its bytes in memory are the octets in the order of the
 * text. Both calls need the network state, which is there from the loading of the library to its unloading.
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

#ifdef __cplusplus
}
#endif

#endif
