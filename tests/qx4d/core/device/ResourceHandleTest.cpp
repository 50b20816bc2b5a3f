// Handles: sharing by name with counts, release from the middle of a list, stale handles,
// and the bound-state caches.
#include "tests/qx4d/core/device/DeviceFixture.h"

namespace qx4d::testing {
namespace {

using HandleTest = EngineTest;

TEST(ResourceHandleRecord, CopiesShareOneRecordThatOutlivesTheResource)
{
    ResourceHandle owner = ResourceHandle::MakeRecord(5);
    ResourceHandle copy = owner;
    EXPECT_EQ(copy.Index(), 5);
    EXPECT_EQ(owner.Count(), 2);
    owner.SetIndex(-1);  // the resource died
    owner = ResourceHandle();
    EXPECT_TRUE(copy.IsNull());
    EXPECT_EQ(copy.Count(), 1);
    EXPECT_TRUE(ResourceHandle().SameAs(copy));  // a stale handle is a null handle
}

TEST_F(HandleTest, TexturesLoadedTwiceByNameShareOneObject)
{
    WriteDds("Images/wood.dds", 0xFF804020u);
    ResourceHandle first = renderer->LoadTexture(u"wood.dds");
    ResourceHandle second = renderer->LoadTexture(u"wood.dds");
    ASSERT_FALSE(first.IsNull());
    EXPECT_EQ(first.Index(), second.Index());
    Texture* texture = renderer->GetTexture(first);
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->refCount, 2);
    EXPECT_EQ(texture->info.Width, 2u);

    ResourceHandle kept = first;
    renderer->ReleaseTexture(first);
    EXPECT_TRUE(first.IsNull());                       // the caller's handle is cleared
    EXPECT_EQ(renderer->GetTexture(second), texture);  // the texture stays
    renderer->ReleaseTexture(second);
    EXPECT_TRUE(kept.IsNull());  // gone: a kept handle reads as null
    EXPECT_EQ(renderer->GetTexture(kept), nullptr);
}

TEST_F(HandleTest, FindTextureNeverLoadsAndColonPathsAreNotPrefixed)
{
    WriteDds("Effects/x.dds", 0xFF0000FFu);
    EXPECT_TRUE(renderer->FindTexture(u"EFFECTS:x.dds").IsNull());
    const ResourceHandle loaded = renderer->LoadTexture(u"EFFECTS:x.dds");
    ASSERT_FALSE(loaded.IsNull());
    EXPECT_EQ(renderer->FindTexture(u"EFFECTS:x.dds").Index(), loaded.Index());
    EXPECT_TRUE(renderer->LoadTexture(u"missing.dds").IsNull());
}

TEST_F(HandleTest, ReleasingFromTheMiddleMovesTheLastAndItsHandleFollows)
{
    ResourceHandle a = renderer->CreateTexture(4, 4, gpu::D3DFMT_A8R8G8B8, 0);
    ResourceHandle b = renderer->CreateTexture(8, 8, gpu::D3DFMT_A8R8G8B8, 0);
    ResourceHandle c = renderer->CreateTexture(16, 16, gpu::D3DFMT_A8R8G8B8, 0);
    ASSERT_EQ(c.Index(), 2);
    Texture* last = renderer->GetTexture(c);
    renderer->ReleaseTexture(b);
    EXPECT_EQ(c.Index(), 1);
    EXPECT_EQ(renderer->GetTexture(c), last);
    EXPECT_EQ(renderer->GetTexture(c)->info.Width, 16u);
    EXPECT_EQ(renderer->GetTexture(a)->info.Width, 4u);
}

TEST_F(HandleTest, BindingFollowsTheCacheAndAStaleHandleUnbinds)
{
    ResourceHandle a = renderer->CreateTexture(4, 4, gpu::D3DFMT_A8R8G8B8, 0);
    ResourceHandle b = renderer->CreateTexture(8, 8, gpu::D3DFMT_A8R8G8B8, 0);
    const ResourceHandle stale = a;
    renderer->SetTexture(0, a);
    EXPECT_EQ(Device().GetTexture(0), renderer->GetTexture(a)->baseTexture);
    renderer->ReleaseTexture(a);  // bound: released and unbound
    EXPECT_EQ(Device().GetTexture(0), nullptr);
    renderer->SetTexture(3, b);
    renderer->SetTexture(3, stale);
    EXPECT_EQ(Device().GetTexture(3), nullptr);
    renderer->SetTexture(9, b);  // no such stage: ignored
}

TEST_F(HandleTest, DeclarationsAreSharedByTheirBytes)
{
    const gpu::D3DVERTEXELEMENT9 elements[] = {{0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
                                               gpu::D3DDECL_END};
    gpu::D3DVERTEXELEMENT9 other[] = {{0, 0, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_POSITION, 0},
                                      gpu::D3DDECL_END};
    const ResourceHandle first = renderer->CreateVertexDeclaration(elements, 2);
    const ResourceHandle same = renderer->CreateVertexDeclaration(elements, 2);
    const ResourceHandle different = renderer->CreateVertexDeclaration(other, 2);
    EXPECT_EQ(first.Index(), same.Index());
    EXPECT_NE(first.Index(), different.Index());
    EXPECT_EQ(renderer->GetVertexDeclaration(first)->refCount, 2);
    EXPECT_TRUE(renderer->CreateVertexDeclaration(elements, 0).IsNull());
}

TEST_F(HandleTest, SurfacesAreSharedUnlessExclusive)
{
    const ResourceHandle depth = renderer->CreateDepthStencil(64, 32, gpu::D3DFMT_D24S8);
    EXPECT_EQ(renderer->CreateDepthStencil(64, 32, gpu::D3DFMT_D24S8).Index(), depth.Index());
    EXPECT_NE(renderer->CreateDepthStencil(64, 32, gpu::D3DFMT_D24X8).Index(), depth.Index());
    const ResourceHandle target = renderer->CreateRenderTarget(64, 32);
    renderer->GetRenderTarget(target)->flags |= kResourceExclusive;
    EXPECT_NE(renderer->CreateRenderTarget(64, 32).Index(), target.Index());
    const ResourceHandle render1 = renderer->CreateRenderTexture(16, 16, gpu::D3DFMT_X8R8G8B8);
    const ResourceHandle render2 = renderer->CreateRenderTexture(16, 16, gpu::D3DFMT_X8R8G8B8);
    EXPECT_NE(render1.Index(), render2.Index());
    EXPECT_EQ(renderer->GetTexture(render1)->flags & kResourceExclusive, kResourceExclusive);
}

TEST_F(HandleTest, ResetStateUnbindsAndSetsLinearFilters)
{
    ResourceHandle texture = renderer->CreateTexture(4, 4, gpu::D3DFMT_A8R8G8B8, 0);
    renderer->SetTexture(7, texture);
    renderer->fogOn = true;
    renderer->ResetState();
    EXPECT_EQ(Device().GetTexture(7), nullptr);
    EXPECT_FALSE(renderer->fogOn);
    qx::DWORD filter = 0;
    Device().GetSamplerState(7, gpu::D3DSAMP_MIPFILTER, &filter);
    EXPECT_EQ(filter, gpu::D3DTEXF_LINEAR);
    renderer->SetTexture(7, texture);  // the cache was cleared: binding works again
    EXPECT_NE(Device().GetTexture(7), nullptr);
}

}  // namespace
}  // namespace qx4d::testing
