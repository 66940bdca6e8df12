#pragma once

#include "result.h"
#include "resulttext.h"

/// Why there is no value; empty when there is one.
template <class T>
QString errorText(const scribo::Result<T>& result)
{
    return result ? QString() : scribo::textOf(result.error());
}
