#pragma once

// Marks what libpavor.so exports. Everything else in it is hidden.
#define PAVO_API __attribute__((visibility("default")))
