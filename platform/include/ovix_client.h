// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

/*
 * The modem messaging client: what the device's libovix_cci provides and what the host build of
 * it in platform/host provides in its place.
 *
 * A client of a service sends requests as plain C structures and receives responses the same way;
 * indications arrive encoded and are decoded on demand. Callbacks run on threads of the messaging
 * library, never on a thread that is inside ovix_client_send_msg_sync, and never with a lock held
 * that a call into the library needs.
 */
#ifndef OVIX_CLIENT_H
#define OVIX_CLIENT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A client or a notifier handle; null means none. */
typedef void* ovix_client_type;

/* A service's message tables, opaque to the client; null means none. */
typedef const struct ovix_service_object* ovix_service_object_type;

/* 0 is success. */
typedef int ovix_client_error_type;

enum {
  OVIX_CLIENT_NO_ERROR = 0,
  OVIX_CLIENT_INTERNAL_ERROR = -1,   /* a defect or a lack of memory in the messaging library */
  OVIX_CLIENT_SERVICE_ERROR = -2,    /* no such service now, or the modem went away */
  OVIX_CLIENT_TIMEOUT_ERROR = -3,    /* no response within the time allowed */
  OVIX_CLIENT_ENCODE_ERROR = -4,     /* the request does not fit the message's table */
  OVIX_CLIENT_DECODE_ERROR = -5,     /* the modem's message does not fit the message's table */
  OVIX_CLIENT_INVALID_HANDLE = -6,   /* a null or released handle */
  OVIX_CLIENT_INVALID_ARGUMENT = -7, /* a null pointer, an unknown message or a wrong length */
};

/* The caller's block, zeroed by the caller before each use and never looked into by it. */
typedef struct ovix_client_os_params {
  uint64_t reserved[8];
} ovix_client_os_params;

/* The caller's block, zeroed by the caller, filled by ovix_client_get_any_service. */
typedef struct ovix_service_info {
  uint64_t reserved[8];
} ovix_service_info;

/* 0: the service became available; any other value: something else happened to it. */
typedef int ovix_client_service_event;

enum {
  OVIX_CLIENT_SERVICE_AVAILABLE = 0,
  OVIX_CLIENT_SERVICE_GONE = 1,
};

/* The kinds of message that ovix_client_message_decode knows. */
enum {
  OVIX_MESSAGE_REQUEST = 0,
  OVIX_MESSAGE_RESPONSE = 1,
  OVIX_MESSAGE_INDICATION = 2,
};

typedef void (*ovix_client_notify_cb)(ovix_client_type client,
                                      ovix_service_object_type service_object,
                                      ovix_client_service_event event, void* data);
typedef void (*ovix_client_error_cb)(ovix_client_type client, ovix_client_error_type error,
                                     void* data);
/* ind_buf holds the encoded message and is valid during the call only. */
typedef void (*ovix_client_ind_cb)(ovix_client_type client, unsigned int msg_id, void* ind_buf,
                                   unsigned int ind_buf_len, void* ind_cb_data);

ovix_client_error_type ovix_client_notifier_init(ovix_service_object_type service_object,
                                                 ovix_client_os_params* os_params,
                                                 ovix_client_type* notifier);

/* A callback registered while the service is already available is told so at once. */
ovix_client_error_type ovix_client_register_notify_cb(ovix_client_type notifier,
                                                      ovix_client_notify_cb callback, void* data);

ovix_client_error_type ovix_client_get_any_service(ovix_service_object_type service_object,
                                                   ovix_service_info* service_info);

ovix_client_error_type ovix_client_init(ovix_service_info* service_info,
                                        ovix_service_object_type service_object,
                                        ovix_client_ind_cb callback, void* ind_cb_data,
                                        ovix_client_os_params* os_params, ovix_client_type* client);

ovix_client_error_type ovix_client_register_error_cb(ovix_client_type client,
                                                     ovix_client_error_cb callback, void* data);

/*
 * Sends one request and waits for its response. req and resp are the C structures of the message.
 * A null client is answered with an error.
 */
ovix_client_error_type ovix_client_send_msg_sync(ovix_client_type client, unsigned int msg_id,
                                                 void* req, unsigned int req_len, void* resp,
                                                 unsigned int resp_len, unsigned int timeout_ms);

ovix_client_error_type ovix_client_message_decode(ovix_client_type client, int message_kind,
                                                  unsigned int msg_id, const void* src,
                                                  unsigned int src_len, void* dst,
                                                  unsigned int dst_len);

/* When it has returned, no callback of that handle runs or will run. */
ovix_client_error_type ovix_client_release(ovix_client_type client);

#ifdef __cplusplus
}
#endif

#endif
