// The one process-wide record. It is plain storage, zero from the start and never released, so that callbacks of a
// process that is ending still find it.
#include "application/application.h"

namespace pelt {

namespace {

Application the_application;

}  // namespace

Application* application() { return &the_application; }

}  // namespace pelt
