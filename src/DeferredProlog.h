//
// DeferredProlog.h
//
// Library: FastInfoset
// Module:  DeferredProlog
//
// What a writer holds until the root element starts. Internal: this header
// is not installed.
//


#ifndef FastInfoset_DeferredProlog_INCLUDED
#define FastInfoset_DeferredProlog_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Notation.h"
#include "Ixor/FastInfoset/UnparsedEntity.h"
#include <cstddef>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class DeferredProlog
	/// The events before the root element. The header goes out with the
	/// root element, so that the notations and unparsed entities an XML
	/// parser reports inside the document type declaration still go into
	/// it; the comments, processing instructions and the declaration itself
	/// follow the header in the order they came.
{
public:
	struct Item
	{
		enum Kind
		{
			PROCESSING_INSTRUCTION,
			COMMENT,
			DTD_START,
			DTD_END
		};

		Kind        kind;
		std::string first;    // target, text or public identifier
		std::string second;   // data or system identifier
	};

	void addNotation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId);
	void addUnparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName);
		/// An absent identifier is kept as an empty one.

	void addProcessingInstruction(const std::string& target, const std::string& data);
	void addComment(const char* text, std::size_t length);
	void addDTDStart(const std::string& publicId, const std::string& systemId);
	void addDTDEnd();

	const std::vector<Notation>& notations() const;
	const std::vector<UnparsedEntity>& unparsedEntities() const;

	std::size_t itemCount() const;
	const Item& item(std::size_t i) const;
		/// The events to write after the header, in their order.

	void clearItems();

	void clear();
		/// Forgets everything, keeping the memory of the lists.

private:
	Item& nextItem(Item::Kind kind);

	std::vector<Notation>       _notations;
	std::vector<UnparsedEntity> _unparsedEntities;
	std::vector<Item>           _items;       // entries past _itemCount are spare, with their strings' memory
	std::size_t                 _itemCount = 0;
};


//
// inlines
//
inline const std::vector<Notation>& DeferredProlog::notations() const
{
	return _notations;
}


inline const std::vector<UnparsedEntity>& DeferredProlog::unparsedEntities() const
{
	return _unparsedEntities;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DeferredProlog_INCLUDED
