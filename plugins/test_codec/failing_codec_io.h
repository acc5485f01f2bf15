/* The file work of the failing test codec, done in C++ so that its files are
 * written whole like every other file of the program. Plain C interface. */
#ifndef KESTRELON_FAILING_CODEC_IO_H
#define KESTRELON_FAILING_CODEC_IO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Appends one line, the non-null fields joined by tabs, to the file named by
 * KESTRELON_FAILING_CODEC_LOG; nothing when it is not set. */
void fc_log(const char* op, const char* arg1, const char* arg2);

/* Writes a 48-byte encoded-file header and the wave file's bytes to
 * output_path. 0 on success. */
int fc_encode(const char* wave_path, const char* output_path);

/* Writes what follows the header of the encoded file back as the wave file.
 * 0 on success, 1 when the file cannot be read or written, 2 when it is not
 * an encoded file. */
int fc_decode(const char* encoded_path, const char* wave_path);

/* The length of the file's encoded data (file size - 48), or -1. */
int32_t fc_encoded_length(const char* path);

#ifdef __cplusplus
}
#endif

#endif
