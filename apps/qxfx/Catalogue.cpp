#include "apps/qxfx/Catalogue.h"

#include "apps/session/ContentPack.h"
#include "host/DynamicEffect.h"
#include "host/EffectCatalog.h"
#include "platform/os/WideText.h"

namespace qx::qxfx {

namespace {

std::string categoryName(CQXDynamicEffect& host, LONG categoryId)
{
    LONG count = 0;
    host.GetCategoriesCount(&count);
    for (LONG i = 0; i < count; ++i) {
        LONG id = -1;
        Bstr name;
        if (host.GetCategoryIDFromIndex(i, &id) == S_OK && id == categoryId &&
            host.GetCategoryString(i, name.out()) == S_OK) {
            return os::toUtf8(name.view());
        }
    }
    return {};
}

}  // namespace

std::vector<CatalogueEntry> readCatalogue()
{
    const auto host = CQXDynamicEffect::Create();
    std::vector<CatalogueEntry> entries;
    // The count leaves out the last row; every indexed member still answers for it.
    LONG count = 0;
    host->GetEffectsCount(&count);
    for (LONG index = 0; index <= count; ++index) {
        CatalogueEntry entry;
        entry.index = index;
        LONG id = 0;
        if (host->GetIDFromIdx(index, &id) != S_OK) break;
        entry.id = id;
        Bstr name;
        if (host->GetEffectString(index, name.out()) == S_OK) entry.name = os::toUtf8(name.view());
        LONG category = 0;
        host->GetEffectCategoryFromIndex(index, &category);
        entry.category = category;
        entry.categoryName = categoryName(*host.get(), category);
        BYTE dialog = 0;
        host->HasPropertiesDialog(index, &dialog);
        entry.hasDialog = dialog != 0;
        LONG values[kMaxParams] = {};
        LONG valueCount = 0;
        host->GetEffectDefaults(index, values, &valueCount);
        entry.defaults = os::toUtf8(formatParams(std::span(values, size_t(valueCount))));
        entry.needsPack = needsPack(id);
        entry.source = packSource(id);
        // The host's interface has no member for the meaning of the values: the tables
        // are read directly.
        entry.params = EffectTable[size_t(index)].params;
        entries.push_back(std::move(entry));
    }
    return entries;
}

}  // namespace qx::qxfx
