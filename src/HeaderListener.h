//
// HeaderListener.h
//
// Library: FastInfoset
// Module:  Decoder
//
// What the header decoding asks and tells while it reads a document's
// header. Internal, not installed.
//


#ifndef FastInfoset_HeaderListener_INCLUDED
#define FastInfoset_HeaderListener_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class HeaderListener
	/// Supplies the external vocabulary that a document names by URI, and
	/// learns what the header held as it is read: the parser only answers,
	/// a listing of the document prints what it learns.
{
public:
	static constexpr const char* LOADING_DISABLED =
		"External vocabulary loading is disabled (FastInfosetParser::setLoadExternalVocabularies)";
		/// The message, with the URI, for a vocabulary that may not be loaded.

	virtual ~HeaderListener() {}

	virtual bool loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary) = 0;
		/// Fills vocabulary with the vocabulary uri names. Returns true when
		/// it was loaded from uri, false when it was known in advance.
		/// Throws FISException when it cannot or may not be had.

	virtual void presenceRead(unsigned int bits);
		/// The seven bits that say which optional components follow, the
		/// additional data's the most significant.

	virtual void additionalDataRead();

	virtual void initialVocabularyStarts();

	virtual void externalVocabularyNamed(const std::string& uri);
		/// Before the vocabulary is loaded, so that a listing shows the URI
		/// even when loading fails.

	virtual void listRead(DocumentVocabulary::ID table, std::size_t first);
		/// A list of the initial vocabulary went into table, its first entry
		/// at index first; for restricted alphabets, first is the number of
		/// alphabets before them.
};


//
// inlines
//
inline void HeaderListener::presenceRead(unsigned int)
{
}


inline void HeaderListener::additionalDataRead()
{
}


inline void HeaderListener::initialVocabularyStarts()
{
}


inline void HeaderListener::externalVocabularyNamed(const std::string&)
{
}


inline void HeaderListener::listRead(DocumentVocabulary::ID, std::size_t)
{
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HeaderListener_INCLUDED
