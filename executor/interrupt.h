// Ctrl-C while statements run: a flag that the display of a result looks at between values.
#pragma once

#include <csignal>

/// 1 once SIGINT has come while it was taken over, else 0. Cleared at the program's start and by
/// return_interrupt.
extern volatile int interrupt_status;

/// The handler: stores 1 into interrupt_status and does nothing else, as a handler may do little
/// more.
void interrupt_handler(int signal_number);

/// Lets interrupt_handler take SIGINT, keeping the disposition found in saved. The flag is not
/// cleared.
void take_interrupt(struct sigaction* saved);

/// Puts the saved disposition back, then clears the flag.
void return_interrupt(const struct sigaction* saved);
