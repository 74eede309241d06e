// The sentences about files that cannot be opened or read. Each is followed by an empty line.
#pragma once

/// Reports that the save file could not be opened. Error_number is the errno of the failed call.
void report_save_file_error(const char* path, int error_number);

/// Reports that the statement file could not be opened. Error_number is the errno of the failed
/// call.
void report_statement_file_error(const char* path, int error_number);

enum ReadError { read_size_unknown, read_out_of_memory, read_too_short };

/// Reports that the statement file could not be read.
void report_read_error(const char* path, ReadError error);
