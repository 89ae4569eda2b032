// The two allocation families of the host.
//
// Array-scoped blocks (kxMallocEx ...) can be adopted by arrays through
// kxSetData and the other setters; they are accounted to the innermost call
// frame (kx_frame.h) and freed if an error passes out of it. Host-scoped
// blocks (utMalloc ...) outlive calls and are freed by their owners.
//
// The "Check" forms raise the host's out-of-memory error instead of returning
// null. Blocks of 4 MiB and more are aligned to 2 MiB and advised for huge
// pages, since the large results of readers are filled once and read in full.
#pragma once

#include <cstddef>

#include "twhost/export.h"

TW_HOST void* kxMallocEx(size_t n);
TW_HOST void* kxMallocExCheck(size_t n);
TW_HOST void* kxCallocEx(size_t count, size_t size);
TW_HOST void* kxCallocExCheck(size_t count, size_t size);
TW_HOST void* kxReallocExCheck(void* p, size_t n);
TW_HOST void kxFreeEx(void* p);
TW_HOST void kxFree(void* p);

TW_HOST void* utMalloc(size_t n);
TW_HOST void* utMallocWithCheck(size_t n);
TW_HOST void* utCalloc(size_t count, size_t size);
TW_HOST void* utReallocWithCheck(void* p, size_t n);
TW_HOST void utFree(void* p);
