//
// FISException.h
//
// Library: FastInfoset
// Module:  FISException
//


#ifndef FastInfoset_FISException_INCLUDED
#define FastInfoset_FISException_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"


namespace Ixor {
namespace FastInfoset {


POCO_DECLARE_EXCEPTION(FastInfoset_API, FISException, Ixor::RuntimeException)
	/// "FastInfoset Exception": header errors, table entries without an
	/// algorithm and misuse of the writer's event sequence.

POCO_DECLARE_EXCEPTION(FastInfoset_API, FISParseException, FISException)
	/// "FastInfoset Parse Exception": the input ended too early.

POCO_DECLARE_EXCEPTION(FastInfoset_API, FISEncodingException, FISException)
	/// "FastInfoset Encoding Exception": a value or bit position that the
	/// format does not allow, on reading as on writing.


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FISException_INCLUDED
