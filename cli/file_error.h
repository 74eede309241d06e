// The sentences about files that cannot be opened or read. Each is followed by an empty line.
#pragma once

/// Reports that a file could not be opened. Error_number is the errno of the failed call.
void report_open_error(const char* path, int error_number);

/// The same for the statement file, of which it is also told that it does not exist. Not so of the
/// save file: it is created when missing, so only its directory can be.
void report_statement_file_error(const char* path, int error_number);

enum ReadError { read_size_unknown, read_out_of_memory, read_too_short };

/// Reports that the statement file could not be read.
void report_read_error(const char* path, ReadError error);
