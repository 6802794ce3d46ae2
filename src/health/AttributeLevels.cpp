#include "AttributeLevels.h"

namespace AttributeLevels {

Pair couple(Pair levels, Moved moved, bool lowerIsWorse)
{
    const bool crossed = lowerIsWorse ? levels.critical > levels.warning : levels.critical < levels.warning;
    if (!crossed)
        return levels;
    if (moved == Moved::Warning)
        levels.critical = levels.warning;
    else
        levels.warning = levels.critical;
    return levels;
}

} // namespace AttributeLevels
