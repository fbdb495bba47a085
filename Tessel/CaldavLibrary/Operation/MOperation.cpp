#include "Tessel/CaldavLibrary/Operation/MOperation.h"

namespace Tessel {

void MOperation::start()
{
    if (isCancelled()) {
        willChangeValue("isFinished");
        is_Finished = true;
        didChangeValue("isFinished");
        return;
    }
    willChangeValue("isExecuting");
    is_Executing = true;
    didChangeValue("isExecuting");
    main();
}

void MOperation::setDone(bool done)
{
    done_ = done;
    willChangeValue("isFinished");
    willChangeValue("isExecuting");
    is_Finished = done;
    is_Executing = !done;
    didChangeValue("isExecuting");
    didChangeValue("isFinished");
}

} // namespace Tessel
