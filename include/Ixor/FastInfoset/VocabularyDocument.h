//
// VocabularyDocument.h
//
// Library: FastInfoset
// Module:  VocabularyDocument
//


#ifndef FastInfoset_VocabularyDocument_INCLUDED
#define FastInfoset_VocabularyDocument_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include <iosfwd>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API VocabularyDocument
	/// Stores a vocabulary as a Fast Infoset document and loads it back.
	///
	/// A vocabulary document is an ordinary Fast Infoset document: its
	/// initial vocabulary holds the tables, a comment "vocabulary URI" after
	/// the header carries the vocabulary's URI (neither enters a table), and
	/// its root element is the first element name of the vocabulary, empty
	/// (a vocabulary without element names, or whose first one names no
	/// entries of its tables, gives a document without root element). So the document adds nothing to its own tables, and a
	/// reader that loads it from its URI, as an external vocabulary named by
	/// a document, gets the same tables at the same indexes.
{
public:
	static const std::string URI_COMMENT;
		/// "vocabulary ": the comment that carries the URI starts with it.

	static void save(const DocumentVocabulary& vocabulary, std::ostream& out);
		/// Writes vocabulary (every table, the restricted alphabets and the
		/// URI) as a vocabulary document. Throws what FastInfosetWriter
		/// throws, Ixor::IOException for a failing stream.

	static void save(const DocumentVocabulary& vocabulary, const std::string& path);
		/// The same into a file, created or replaced.

	static DocumentVocabulary load(std::istream& in, DocumentVocabulary::VocabularyImpl impl = DocumentVocabulary::VOC_MAP);
		/// Reads a vocabulary document into a vocabulary with tables of the
		/// kind impl: map tables (the default) or hash tables for a writer,
		/// vector tables for a parser. The result equals the vocabulary
		/// saved: the same entries at the same indexes, the same restricted
		/// alphabets and URI. Any other Fast Infoset document gives the
		/// vocabulary it ends with, without URI.
		///
		/// Throws what FastInfosetParser throws for a document that is not
		/// Fast Infoset or is damaged; FISException "External vocabulary
		/// loading is disabled" when the document names an external
		/// vocabulary itself (nothing is opened); FISException "Vocabulary
		/// table holds a value twice" when a table of the document repeats
		/// a value that map and hash tables cannot hold twice;
		/// Ixor::PoolOverflowException "Vocabulary hash table full" when
		/// hash tables are too small for it.

	static DocumentVocabulary load(const std::string& path, DocumentVocabulary::VocabularyImpl impl = DocumentVocabulary::VOC_MAP);
		/// The same from a file; a missing file raises
		/// Ixor::FileNotFoundException.

	static DocumentVocabulary withTables(const DocumentVocabulary& vocabulary, DocumentVocabulary::VocabularyImpl impl);
		/// A copy of vocabulary with tables of the kind impl: the same
		/// entries at the same indexes, restricted alphabets and URI. Name
		/// parts that a parser marks absent (all bits set) become index 0,
		/// as a writer keeps them. Fails as load() does for values held
		/// twice and full hash tables.

	static bool startsWith(const DocumentVocabulary& vocabulary, const DocumentVocabulary& base);
		/// Whether vocabulary holds every entry of base at base's index
		/// (and possibly more), and base's restricted alphabets first.

private:
	VocabularyDocument() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VocabularyDocument_INCLUDED
