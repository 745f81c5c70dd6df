//
// ExternalVocabularyLoader.h
//
// Library: FastInfoset
// Module:  Decoder
//
// What the header decoding asks when a document names an external
// vocabulary. The parser provides it; internal, not installed.
//


#ifndef FastInfoset_ExternalVocabularyLoader_INCLUDED
#define FastInfoset_ExternalVocabularyLoader_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class DocumentVocabulary;


class ExternalVocabularyLoader
	/// Supplies the external vocabulary that a document names by URI.
{
public:
	static constexpr const char* LOADING_DISABLED =
		"External vocabulary loading is disabled (FastInfosetParser::setLoadExternalVocabularies)";
		/// The message, with the URI, for a vocabulary that may not be loaded.

	virtual ~ExternalVocabularyLoader() {}

	virtual bool load(const std::string& uri, DocumentVocabulary& vocabulary) = 0;
		/// Fills vocabulary with the vocabulary uri names. Returns true when
		/// it was loaded from uri, false when it was known in advance.
		/// Throws FISException when it cannot or may not be had.
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ExternalVocabularyLoader_INCLUDED
