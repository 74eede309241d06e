// The program's version and its banner.
#pragma once

/// The version, as the banner and --version show it.
extern const char* const program_version;

/// Writes the banner: versions, the notice line, an empty line.
void show_header();
