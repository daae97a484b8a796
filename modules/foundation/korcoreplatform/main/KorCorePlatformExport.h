/// The export macro of the platform library: what carries it is visible outside the shared library.

#pragma once

#define KORCOREPLATFORM_EXPORT __attribute__((visibility("default")))
