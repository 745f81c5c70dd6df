#include "Ixor/FastInfoset/NullEncoding.h"


namespace Ixor {
namespace FastInfoset {


NullEncoding::NullEncoding()
{
	// The parser reuses one object for every literal string of a document.
	_content.reserve(1024);
}


NullEncoding::NullEncoding(Unreserved)
{
}


NullEncoding::~NullEncoding()
{
}


} } // namespace Ixor::FastInfoset
