//
// NullEncoding.h
//
// Library: FastInfoset
// Module:  NullEncoding
//


#ifndef FastInfoset_NullEncoding_INCLUDED
#define FastInfoset_NullEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/TextEncoding.h"


namespace Ixor {
namespace FastInfoset {


struct FastInfoset_API NullText;
extern template class TextEncoding<NullText>;


class FastInfoset_API NullEncoding: public TextEncoding<NullText>
	/// A plain string carried as its UTF-8 octets (type 0, no algorithm):
	/// the text is the value. The parser keeps one for a whole parse and
	/// reads every literal string into its content().
	///
	/// The constructors from text, the functions and their messages are
	/// those of TextEncoding, with the message "Illegal empty string for
	/// NullEncoding". merge() takes the text of another plain string (a
	/// NullEncoding or a NullRefEncoding). Writing an empty text, through
	/// write() or encode(), is a programming error (assertion).
{
public:
	typedef Ixor::AutoPtr<NullEncoding> Ptr;

	NullEncoding();
		/// An empty string with 1024 characters of capacity reserved.

	using TextEncoding::TextEncoding;

protected:
	struct Unreserved
	{
	};

	explicit NullEncoding(Unreserved);
		/// An empty string without reserved capacity, for subclasses that
		/// keep their text elsewhere.

	~NullEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_NullEncoding_INCLUDED
