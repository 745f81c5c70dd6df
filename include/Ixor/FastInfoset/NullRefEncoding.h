//
// NullRefEncoding.h
//
// Library: FastInfoset
// Module:  NullRefEncoding
//


#ifndef FastInfoset_NullRefEncoding_INCLUDED
#define FastInfoset_NullRefEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API NullRefEncoding: public NullEncoding
	/// A read-only plain string that refers to a string owned elsewhere,
	/// typically a vocabulary table entry. The parser points its one object
	/// at each indexed string in turn with reset(), so a receiver must not
	/// keep it past the next string.
{
public:
	typedef Ixor::AutoPtr<NullRefEncoding> Ptr;

	explicit NullRefEncoding(const std::string& data);
		/// Refers to data, which must outlive this object or the next reset().

	void reset(const std::string& data);
		/// Refers to data from now on.

	bool merge(const Encoding& other) override;
		/// Throws Ixor::InvalidAccessException "NullRefEncoding is immutable".

	void write(BitStreamWriter& writer) const override;
		/// Writes the referred string as a non-empty octet string; an empty
		/// string is a programming error (assertion).

	void handle(Ixor::XML::ContentHandler* pHandler) const override;
	void handle(FISContentHandler* pHandler) const override;
		/// Report the referred string through characters(); nothing for a
		/// null handler.

	const std::string& content() const override;
		/// The referred string.

	std::string& content() override;
		/// Throws Ixor::InvalidAccessException "NullRefEncoding is immutable".

protected:
	~NullRefEncoding();

private:
	const std::string* _data;
};


//
// inlines
//
inline const std::string& NullRefEncoding::content() const
{
	poco_check_ptr(_data);
	return *_data;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_NullRefEncoding_INCLUDED
