// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

/* The modem diagnostic channel: text messages with a descriptor, collected by the modem's tools. */
#ifndef DIAG_LSM_H
#define DIAG_LSM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* env is null. Non-zero is success. */
int Diag_LSM_Init(unsigned char* env);
int Diag_LSM_DeInit(void);

/* Constant facts of one call site; it must outlive every call that names it. */
typedef struct {
  uint16_t line;
  uint16_t ss_id;     /* subsystem */
  uint32_t ss_mask;   /* severity bits */
  const char* format; /* printf format of the message */
  const char* file;
} diag_msg_descriptor;

/* The variable arguments are those of the descriptor's format. */
void msg_sprintf(const diag_msg_descriptor* descriptor, ...);

#ifdef __cplusplus
}
#endif

#endif
