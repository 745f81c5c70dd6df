//
// VocabularyFileLoader.h
//
// Library: FastInfoset
// Module:  FastInfosetParser
//
// The parser's loader of external vocabularies. Internal, not installed.
//


#ifndef FastInfoset_VocabularyFileLoader_INCLUDED
#define FastInfoset_VocabularyFileLoader_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class DocumentVocabulary;
class FastInfosetParser;


class VocabularyFileLoader
	/// Loads external vocabularies as the parser's settings allow: the
	/// vocabulary given to the parser in advance when the URI is its URI;
	/// otherwise, only when loading is allowed, a regular local file of
	/// limited size, read as XML when its path ends in ".xml" and as Fast
	/// Infoset otherwise.
{
public:
	static const int MAX_NESTING = 8;

	explicit VocabularyFileLoader(const FastInfosetParser& parser);

	bool load(const std::string& uri, DocumentVocabulary& vocabulary);
		/// Fills vocabulary with the vocabulary uri names. Returns true when
		/// it was loaded from uri, false when it was the one given in
		/// advance. Throws FISException when it cannot or may not be had.

	static DocumentVocabulary forReading(const DocumentVocabulary& source);
		/// A copy of source with vector tables, under its URI: the tables a
		/// reader needs, which give every literal of a document its own index
		/// and take any number of them. Entries keep their indexes.

private:
	const FastInfosetParser& _parser;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VocabularyFileLoader_INCLUDED
