#include "korcoreplatform/main/core/logging/Filter.h"

TLog::Filter::~Filter() = default;
