#include "Ixor/FastInfoset/FISContentHandler.h"


namespace Ixor {
namespace FastInfoset {


FISContentHandler::~FISContentHandler()
{
}


} } // namespace Ixor::FastInfoset
