#include "host/DynamicEffect.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

class Catalog : public ::testing::Test {
protected:
    com::ComPtr<CQXDynamicEffect> effect = CQXDynamicEffect::Create();

    std::u16string effectString(LONG index)
    {
        Bstr text;
        EXPECT_EQ(effect->GetEffectString(index, text.out()), S_OK);
        return std::u16string(text.view());
    }
};

TEST_F(Catalog, IdsAndIndexesAreDifferentNumbers)
{
    LONG index = 0;
    EXPECT_EQ(effect->GetIndexFromID(2000, &index), S_OK);
    EXPECT_EQ(index, 10);
    EXPECT_EQ(effect->GetIndexFromID(12, &index), S_OK);
    EXPECT_EQ(index, 15);
    EXPECT_EQ(effect->GetIndexFromID(16, &index), E_FAIL);
    EXPECT_EQ(index, -1);

    LONG id = 0;
    EXPECT_EQ(effect->GetIDFromIdx(24, &id), S_OK);
    EXPECT_EQ(id, 10000);
    EXPECT_EQ(effect->GetIDFromIdx(25, &id), E_INVALIDARG);
    EXPECT_EQ(effect->GetIDFromIdx(-1, &id), E_INVALIDARG);
}

TEST_F(Catalog, IndexPutTakesAnIdAndGetGivesTheIndex)
{
    LONG index = 0;
    EXPECT_EQ(effect->put_Index(2001), S_OK);
    effect->get_Index(&index);
    EXPECT_EQ(index, 16);
    EXPECT_EQ(effect->put_Index(16), E_FAIL);  // an index, and no effect id
    effect->get_Index(&index);
    EXPECT_EQ(index, -1);
}

TEST_F(Catalog, EnumerationLeavesOutTheExternalFilterButIndexesAcceptIt)
{
    LONG count = 0;
    effect->GetEffectsCount(&count);
    EXPECT_EQ(count, 24);
    EXPECT_EQ(effectString(24), u"");
    EXPECT_EQ(effectString(17), u"");
    EXPECT_EQ(effectString(0), u"Déplacement, zoom  -");
    EXPECT_EQ(effectString(10), u"Film ancien 2");
    EXPECT_EQ(effectString(16), u"Gouttes d'eau");
    EXPECT_EQ(effectString(13), u"Saturation, +");
    BSTR none = nullptr;
    EXPECT_EQ(effect->GetEffectString(25, &none), E_INVALIDARG);
}

TEST_F(Catalog, EveryNamedRowHasItsText)
{
    for (LONG index = 0; index < kEffectTableSize; ++index) {
        const bool named = EffectTable[size_t(index)].nameStringId != 0;
        EXPECT_EQ(!effectString(index).empty(), named) << "row " << index;
    }
}

TEST_F(Catalog, DialogsAndCategoriesByIndex)
{
    BYTE hasDialog = 9;
    EXPECT_EQ(effect->HasPropertiesDialog(16, &hasDialog), S_OK);
    EXPECT_EQ(hasDialog, 1);
    EXPECT_EQ(effect->HasPropertiesDialog(11, &hasDialog), S_OK);
    EXPECT_EQ(hasDialog, 0);
    EXPECT_EQ(effect->HasPropertiesDialog(25, &hasDialog), E_INVALIDARG);

    LONG category = 0;
    EXPECT_EQ(effect->GetEffectCategoryFromIndex(20, &category), S_OK);
    EXPECT_EQ(category, 2);
    EXPECT_EQ(effect->GetEffectCategoryFromIndex(25, &category), E_FAIL);  // E_FAIL here, unlike its neighbours
}

TEST_F(Catalog, CategoriesHaveNamesAndNoImages)
{
    LONG count = 0;
    effect->GetCategoriesCount(&count);
    EXPECT_EQ(count, 5);
    Bstr name;
    EXPECT_EQ(effect->GetCategoryString(4, name.out()), S_OK);
    EXPECT_EQ(name.view(), u"Objets animés");
    EXPECT_EQ(effect->GetCategoryString(5, name.out()), E_FAIL);
    LONG id = 0;
    EXPECT_EQ(effect->GetCategoryIDFromIndex(3, &id), S_OK);
    EXPECT_EQ(id, 3);
    EXPECT_EQ(effect->GetCategoryIDFromIndex(-1, &id), E_FAIL);

    BYTE* bits = reinterpret_cast<BYTE*>(0x1);
    LONG width = 7;
    LONG height = 7;
    EXPECT_EQ(effect->GetCategoryImageFromID(1, &bits, &width, &height), E_FAIL);
    EXPECT_EQ(effect->GetCategoryImageFromIndex(0, &bits, &width, &height), E_FAIL);
    EXPECT_EQ(effect->GetCategoryImageFromID(7, &bits, &width, &height), E_FAIL);
    EXPECT_EQ(width, 7);  // nothing written
}

TEST_F(Catalog, DurationsInSecondsAndInTheBase)
{
    EXPECT_EQ(effect->put_Duration(1.5), S_OK);
    double seconds = 0.0;
    effect->get_Duration(&seconds);
    EXPECT_EQ(seconds, 1.5);
    EXPECT_EQ(effect->put_Duration(1e-8), S_OK);  // below one unit of 100 ns: truncated to zero
    effect->get_Duration(&seconds);
    EXPECT_EQ(seconds, 0.0);

    // The base's own duration is a float that only takes positive values.
    EXPECT_EQ(effect->put_Duration(0.0f), E_INVALIDARG);
    EXPECT_EQ(effect->put_Duration(2.0f), S_OK);
    float baseDuration = 0.0f;
    effect->get_Duration(&baseDuration);
    EXPECT_EQ(baseDuration, 2.0f);
    const DWORD generation = effect->generationId();
    EXPECT_EQ(effect->put_Duration(2.0f), S_OK);
    EXPECT_EQ(effect->generationId(), generation);  // the same value changes nothing
}

TEST_F(Catalog, ProgressRefusesValuesOutsideTheUnitRange)
{
    EXPECT_EQ(effect->put_Progress(0.25f), S_OK);
    const DWORD generation = effect->generationId();
    EXPECT_EQ(effect->put_Progress(1.5f), E_INVALIDARG);
    EXPECT_EQ(effect->put_Progress(-0.1f), E_INVALIDARG);
    float progress = 0.0f;
    effect->get_Progress(&progress);
    EXPECT_EQ(progress, 0.25f);
    EXPECT_EQ(effect->generationId(), generation);
    effect->put_Progress(0.5f);
    EXPECT_GT(effect->generationId(), generation);
    LONG capabilities = 0;
    effect->get_Capabilities(&capabilities);
    EXPECT_EQ(capabilities, 2);
    EXPECT_EQ(effect->get_Capabilities(nullptr), E_POINTER);
}

TEST_F(Catalog, PlainPropertiesAndTheSceneContextThatIsNotReady)
{
    Bstr path(u"Scenes\\Misc\\Cube.afx");
    EXPECT_EQ(effect->put_Source(path.get()), S_OK);
    Bstr back;
    effect->get_Source(back.out());
    EXPECT_EQ(back.view(), path.view());

    Bstr tooLong(std::u16string(300, u'x'));
    effect->put_Source(tooLong.get());
    effect->get_Source(back.out());
    EXPECT_EQ(back.view().size(), 259u);

    float fps = 0.0f;
    effect->get_Fps(&fps);
    EXPECT_EQ(fps, 25.0f);
    float duration = 0.0f;
    EXPECT_EQ(effect->GetSceneDuration(path.get(), &duration), S_OK);
    EXPECT_EQ(duration, 1.0f);
    EXPECT_EQ(effect->SetGlobalDataPath(path.get()), S_OK);
}

TEST_F(Catalog, AnswersItsInterfaces)
{
    com::ComPtr<IQXDynamicEffect> dual;
    EXPECT_EQ(effect->QueryInterface(IQXDynamicEffect::iid, reinterpret_cast<void**>(dual.out())), S_OK);
    com::ComPtr<transform::IDXTransform> transformInterface;
    EXPECT_EQ(effect->QueryInterface(transform::IDXTransform::iid, reinterpret_cast<void**>(transformInterface.out())),
              S_OK);
    LONG count = 0;
    dual->GetEffectsCount(&count);
    EXPECT_EQ(count, 24);
    com::ComPtr<transform::IDXEffect> effectInterface;
    EXPECT_EQ(effect->QueryInterface(transform::IDXEffect::iid, reinterpret_cast<void**>(effectInterface.out())), S_OK);
    EXPECT_EQ(effectInterface->put_Progress(0.75f), S_OK);
    float progress = 0.0f;
    dual->get_Progress(&progress);
    EXPECT_EQ(progress, 0.75f);
}

}  // namespace
}  // namespace qx
