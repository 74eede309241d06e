// HELP DATA TYPE.
#pragma once

/// Writes the table of the data types with their constants and sizes.
void show_data_types();
