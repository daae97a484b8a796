/// The export macro of the system layer: what carries it is visible outside the shared library.

#pragma once

#define KORSYS_EXPORT __attribute__((visibility("default")))
