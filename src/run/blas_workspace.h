// The work space of the BLAS, taken before a factorisation needs it.
// Called by the run order once, behind the head of the report.
#pragma once

namespace keld {

/// Makes the BLAS map its work space now. OpenBLAS maps 128 MB for each of its threads at first use and keeps
/// them; where they can't be had it tries for ever, even as the process ends. With so little address space
/// the run ends here: message, wait, status 1.
void takeBlasWorkspace();

}  // namespace keld
