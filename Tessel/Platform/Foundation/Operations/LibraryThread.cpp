#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"

namespace Tessel {

namespace {

thread_local int depth = 0;

} // namespace

LibraryThread::LibraryThread()
{
    ++depth;
}

LibraryThread::~LibraryThread()
{
    --depth;
}

bool LibraryThread::isCurrent()
{
    return depth > 0;
}

} // namespace Tessel
