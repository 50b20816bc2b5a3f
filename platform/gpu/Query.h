#pragma once
// Event and occlusion queries. An event query ends when the card has done all work issued
// before it; an occlusion query counts the samples that passed between begin and end.
#include "platform/gpu/GlName.h"
#include "platform/gpu/Types.h"

#include <memory>

namespace qx::gpu {

class Query {
public:
    /// Null for a type other than D3DQUERYTYPE_EVENT and D3DQUERYTYPE_OCCLUSION.
    static std::shared_ptr<Query> create(const std::shared_ptr<Context>& context, D3DQUERYTYPE type);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    HRESULT Issue(DWORD flags);
    /// S_OK with the result (a BOOL for events, a DWORD count for occlusion), S_FALSE while
    /// the card is still busy. D3DGETDATA_FLUSH makes sure the work gets going.
    HRESULT GetData(void* data, DWORD size, DWORD flags);
    D3DQUERYTYPE GetType() const { return type_; }

private:
    Query(const std::shared_ptr<Context>& context, D3DQUERYTYPE type) : context_(context), type_(type) {}
    void dropFence();

    std::shared_ptr<Context> context_;
    D3DQUERYTYPE type_;
    GlName query_;
    void* fence_ = nullptr;  // the sync object of an issued event query
    bool issued_ = false;
};

}  // namespace qx::gpu
