#include "Ixor/FastInfoset/FISException.h"
#include <typeinfo>


namespace Ixor {
namespace FastInfoset {


POCO_IMPLEMENT_EXCEPTION(FISException, Ixor::RuntimeException, "FastInfoset Exception")
POCO_IMPLEMENT_EXCEPTION(FISParseException, FISException, "FastInfoset Parse Exception")
POCO_IMPLEMENT_EXCEPTION(FISEncodingException, FISException, "FastInfoset Encoding Exception")


} } // namespace Ixor::FastInfoset
