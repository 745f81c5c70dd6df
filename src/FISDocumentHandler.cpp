#include "Ixor/FastInfoset/FISDocumentHandler.h"


namespace Ixor {
namespace FastInfoset {


FISDocumentHandler::~FISDocumentHandler()
{
}


} } // namespace Ixor::FastInfoset
