// The makers of the %D and %C columns, and the category column itself: an
// adapter that hands each field, decoded, to the collector, and remembers
// the code of the bytes of each field of a UTF-8 file, since the same bytes
// always decode, unquote and look up to the same code.
#include "datetime/columns.h"

#include <memory>

#include "byte_memo.h"
#include "category_collector.h"
#include "date_column.h"
#include "textscan/column.h"
#include "textscan/options.h"

namespace datetime {

namespace {

class CategoryColumn final : public textscan::TextColumn {
 public:
  void addField(const textscan::FieldText& text) override {
    if (!text.isNarrow()) {
      collector_.addField(text.wide(), text.length());
      return;
    }
    uint64_t code = memo_.find(text.narrow(), text.length());
    if (code != ByteMemo::kNone) {
      collector_.addCode(code);
      return;
    }
    decoded_.clear();
    text.appendTo(decoded_);
    collector_.addField(decoded_.data(), decoded_.size());
    memo_.remember(text.narrow(), text.length(), collector_.lastFieldCode());
  }
  uint64_t fieldCount() const override { return collector_.fieldCount(); }
  kxClassID resultClass() const override { return kxOBJECT_CLASS; }
  kxArray* getResult() override { return collector_.getResult(); }

 private:
  CategoricalFieldConverter collector_;
  ByteMemo memo_;
  ustring decoded_;  // a field of UTF-8 bytes, decoded
};

std::unique_ptr<textscan::TextColumn> makeDateColumn(const textscan::FormatDescription& item,
                                                     const textscan::Options& options) {
  return std::make_unique<DatetimeFieldConverter>(item.text, options.dateLocale);
}

std::unique_ptr<textscan::TextColumn> makeCategoryColumn(const textscan::FormatDescription&,
                                                         const textscan::Options&) {
  return std::make_unique<CategoryColumn>();
}

}  // namespace

void installTextscanColumns() {
  textscan::setTextColumnMaker(textscan::DatetimeField, makeDateColumn);
  textscan::setTextColumnMaker(textscan::CategoricalField, makeCategoryColumn);
}

}  // namespace datetime
