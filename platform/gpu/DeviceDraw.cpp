// The device's drawing: framebuffer set-up, clears, draws and read-back.
#include "platform/gpu/Device.h"

#include "platform/gpu/Formats.h"
#include "platform/gpu/GlApi.h"

namespace qx::gpu {

namespace {

struct AttributeFormat {
    GLint size = 0;  // 0: a type this layer does not read
    GLenum type = GL_FLOAT;
    GLboolean normalised = GL_FALSE;
};

AttributeFormat attributeFormat(BYTE declType)
{
    switch (declType) {
    case D3DDECLTYPE_FLOAT1: return {1, GL_FLOAT};
    case D3DDECLTYPE_FLOAT2: return {2, GL_FLOAT};
    case D3DDECLTYPE_FLOAT3: return {3, GL_FLOAT};
    case D3DDECLTYPE_FLOAT4: return {4, GL_FLOAT};
    case D3DDECLTYPE_D3DCOLOR: return {GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE};
    case D3DDECLTYPE_UBYTE4: return {4, GL_UNSIGNED_BYTE};
    case D3DDECLTYPE_SHORT2: return {2, GL_SHORT};
    case D3DDECLTYPE_SHORT4: return {4, GL_SHORT};
    case D3DDECLTYPE_UBYTE4N: return {4, GL_UNSIGNED_BYTE, GL_TRUE};
    case 9: return {2, GL_SHORT, GL_TRUE};            // SHORT2N
    case 10: return {4, GL_SHORT, GL_TRUE};           // SHORT4N
    case 11: return {2, GL_UNSIGNED_SHORT, GL_TRUE};  // USHORT2N
    case 12: return {4, GL_UNSIGNED_SHORT, GL_TRUE};  // USHORT4N
    case 15: return {2, GL_HALF_FLOAT};               // FLOAT16_2
    case 16: return {4, GL_HALF_FLOAT};               // FLOAT16_4
    default: return {};
    }
}

GLenum primitiveMode(D3DPRIMITIVETYPE type)
{
    switch (type) {
    case D3DPT_POINTLIST: return GL_POINTS;
    case D3DPT_LINELIST: return GL_LINES;
    case D3DPT_LINESTRIP: return GL_LINE_STRIP;
    case D3DPT_TRIANGLESTRIP: return GL_TRIANGLE_STRIP;
    case D3DPT_TRIANGLEFAN: return GL_TRIANGLE_FAN;
    default: return GL_TRIANGLES;
    }
}

// Vertices (or indices) that `primitives` primitives of the type take; 0 for a bad type.
uint64_t elementCount(D3DPRIMITIVETYPE type, UINT primitives)
{
    switch (type) {
    case D3DPT_POINTLIST: return primitives;
    case D3DPT_LINELIST: return uint64_t(primitives) * 2;
    case D3DPT_LINESTRIP: return uint64_t(primitives) + 1;
    case D3DPT_TRIANGLELIST: return uint64_t(primitives) * 3;
    case D3DPT_TRIANGLESTRIP:
    case D3DPT_TRIANGLEFAN: return uint64_t(primitives) + 2;
    default: return 0;
    }
}

const D3DVERTEXELEMENT9* findElement(const std::vector<D3DVERTEXELEMENT9>& elements, const AttributeSlot& slot)
{
    for (const D3DVERTEXELEMENT9& element : elements) {
        if (element.Stream == 0xFF) break;
        if (element.Usage == slot.usage && element.UsageIndex == slot.usageIndex) return &element;
    }
    return nullptr;
}

void attach(GLuint framebuffer, GLenum attachment, const Surface* surface)
{
    if (!surface) {
        glNamedFramebufferTexture(framebuffer, attachment, 0, 0);
        return;
    }
    const Texture& texture = *surface->texture();
    if (texture.desc().cube)
        glNamedFramebufferTextureLayer(framebuffer, attachment, texture.glName(), GLint(surface->level()),
                                       GLint(surface->face()));
    else
        glNamedFramebufferTexture(framebuffer, attachment, texture.glName(), GLint(surface->level()));
}

}  // namespace

const Surface* Device::usableDepth() const
{
    if (!depth_ || !target_ || depth_->desc().Width < target_->desc().Width ||
        depth_->desc().Height < target_->desc().Height)
        return nullptr;
    return depth_.get();
}

bool Device::bindFramebuffer()
{
    if (!target_ || !context_->makeCurrent()) return false;
    const GLuint framebuffer = framebuffer_.get();
    attach(framebuffer, GL_COLOR_ATTACHMENT0, target_.get());
    // Direct3D needs a depth surface at least as large as the target; a smaller one would
    // shrink OpenGL's drawing area to it, so it is left out instead.
    const Surface* depth = usableDepth();
    const bool stencil = depth && formatInfo(depth->desc().Format).internalFormat == GL_DEPTH24_STENCIL8;
    attach(framebuffer, GL_DEPTH_STENCIL_ATTACHMENT, nullptr);
    attach(framebuffer, stencil ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT, depth);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    if (glCheckNamedFramebufferStatus(framebuffer, GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) return false;
    glViewport(GLint(viewport_.X), GLint(viewport_.Y), GLsizei(viewport_.Width), GLsizei(viewport_.Height));
    glDepthRangef(viewport_.MinZ, viewport_.MaxZ);
    return true;
}

HRESULT Device::Clear(DWORD flags, DWORD colour, float z, DWORD stencil)
{
    if (lostState_ != D3D_OK) return D3D_OK;  // a lost device takes every call and does nothing
    if (!bindFramebuffer()) return D3DERR_INVALIDCALL;
    // Direct3D clears the viewport's rectangle, whatever the write masks say.
    glEnable(GL_SCISSOR_TEST);
    glScissor(GLint(viewport_.X), GLint(viewport_.Y), GLsizei(viewport_.Width), GLsizei(viewport_.Height));
    GLbitfield mask = 0;
    if (flags & D3DCLEAR_TARGET) {
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glClearColor(float((colour >> 16) & 0xFF) / 255.0f, float((colour >> 8) & 0xFF) / 255.0f,
                     float(colour & 0xFF) / 255.0f, float(colour >> 24) / 255.0f);
        mask |= GL_COLOR_BUFFER_BIT;
    }
    if ((flags & D3DCLEAR_ZBUFFER) && usableDepth()) {
        glDepthMask(GL_TRUE);
        glClearDepthf(z);
        mask |= GL_DEPTH_BUFFER_BIT;
    }
    if ((flags & D3DCLEAR_STENCIL) && usableDepth()) {
        glStencilMask(0xFF);
        glClearStencil(GLint(stencil & 0xFF));
        mask |= GL_STENCIL_BUFFER_BIT;
    }
    glClear(mask);
    glDisable(GL_SCISSOR_TEST);
    return D3D_OK;
}

bool Device::bindVertexInput(const LinkedProgram& program, GLuint userVertices, UINT userStride)
{
    const GLuint vao = vertexArray_.get();
    constexpr GLuint kAttributeCount = 16;
    for (GLuint location = 0; location < kAttributeCount; ++location) glDisableVertexArrayAttrib(vao, location);
    for (const AttributeSlot& slot : program.attributes) {
        const D3DVERTEXELEMENT9* element = findElement(declaration_->elements(), slot);
        const AttributeFormat format = element ? attributeFormat(element->Type) : AttributeFormat{};
        if (!element || format.size == 0 || element->Stream >= streams_.size() || slot.location >= kAttributeCount)
            continue;  // the shader reads the attribute's default (0, 0, 0, 1)
        glVertexArrayAttribFormat(vao, slot.location, format.size, format.type, format.normalised, element->Offset);
        glVertexArrayAttribBinding(vao, slot.location, element->Stream);
        glEnableVertexArrayAttrib(vao, slot.location);
    }
    for (GLuint stream = 0; stream < streams_.size(); ++stream) {
        const Stream& bound = streams_[stream];
        if (stream == 0 && userVertices != 0)
            glVertexArrayVertexBuffer(vao, 0, userVertices, 0, GLsizei(userStride));
        else
            glVertexArrayVertexBuffer(vao, stream, bound.buffer ? bound.buffer->glName() : 0, GLintptr(bound.offset),
                                      GLsizei(bound.stride));
    }
    glVertexArrayElementBuffer(vao, indices_ ? indices_->glName() : 0);
    return true;
}

void Device::uploadConstants(const LinkedProgram& program)
{
    const GLuint id = program.program.get();
    if (program.vertexConstants >= 0)
        glProgramUniform4fv(id, program.vertexConstants, kVertexConstantCount, vertexConstants_.data());
    if (program.pixelConstants >= 0)
        glProgramUniform4fv(id, program.pixelConstants, kPixelConstantCount, pixelConstants_.data());
    const auto width = float(viewport_.Width ? viewport_.Width : 1);
    const auto height = float(viewport_.Height ? viewport_.Height : 1);
    // Half a pixel less a sub-pixel step, in clip units: see the built-in POSITIONT stage.
    constexpr float kShift = 2.0f * (0.5f - 1.0f / 256.0f);
    glProgramUniform2f(id, program.pixelOffset, kShift / width, -kShift / height);
    glProgramUniform4f(id, program.viewport, float(viewport_.X), float(viewport_.Y), width, height);
    const DWORD fog = renderStates_[D3DRS_FOGCOLOR];
    glProgramUniform1i(id, program.fogEnable, renderStates_[D3DRS_FOGENABLE] ? 1 : 0);
    glProgramUniform4f(id, program.fogColor, float((fog >> 16) & 0xFF) / 255.0f, float((fog >> 8) & 0xFF) / 255.0f,
                       float(fog & 0xFF) / 255.0f, float(fog >> 24) / 255.0f);
    const DWORD alphaFunc = renderStates_[D3DRS_ALPHATESTENABLE] ? renderStates_[D3DRS_ALPHAFUNC] : D3DCMP_ALWAYS;
    glProgramUniform1i(id, program.alphaFunc, GLint(alphaFunc));
    glProgramUniform1f(id, program.alphaRef, float(renderStates_[D3DRS_ALPHAREF] & 0xFF));
}

bool Device::prepareDraw(GLuint userVertices, UINT userStride)
{
    if (lostState_ != D3D_OK || !shaders_ || !declaration_ || !bindFramebuffer()) return false;
    const LinkedProgram* program = shaders_->programFor(declaration_->elements());
    if (!program) return false;
    glUseProgram(program->program.get());
    bindVertexInput(*program, userVertices, userStride);
    uploadConstants(*program);
    applyRenderStates();
    return true;
}

HRESULT Device::DrawPrimitive(D3DPRIMITIVETYPE type, UINT startVertex, UINT primitiveCount)
{
    const uint64_t count = elementCount(type, primitiveCount);
    if (count == 0 || count > 0x7FFFFFFF) return D3DERR_INVALIDCALL;
    if (prepareDraw()) glDrawArrays(primitiveMode(type), GLint(startVertex), GLsizei(count));
    return D3D_OK;
}

HRESULT Device::DrawIndexedPrimitive(D3DPRIMITIVETYPE type, int32_t baseVertex, UINT minIndex, UINT vertexCount,
                                     UINT startIndex, UINT primitiveCount)
{
    (void)minIndex;  // a hint for Direct3D's vertex processing; OpenGL reads what the indices say
    (void)vertexCount;
    const uint64_t count = elementCount(type, primitiveCount);
    if (count == 0 || !indices_) return D3DERR_INVALIDCALL;
    const UINT indexSize = indices_->format() == D3DFMT_INDEX32 ? 4 : 2;
    if (uint64_t(startIndex) + count > indices_->length() / indexSize) return D3DERR_INVALIDCALL;
    if (prepareDraw()) {
        const auto offset = static_cast<uintptr_t>(uint64_t(startIndex) * indexSize);
        glDrawElementsBaseVertex(primitiveMode(type), GLsizei(count),
                                 indexSize == 4 ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT,
                                 reinterpret_cast<const void*>(offset), baseVertex);
    }
    return D3D_OK;
}

HRESULT Device::DrawPrimitiveUP(D3DPRIMITIVETYPE type, UINT primitiveCount, const void* vertices, UINT stride)
{
    const uint64_t count = elementCount(type, primitiveCount);
    if (count == 0 || !vertices || stride == 0 || count * stride > (64u << 20)) return D3DERR_INVALIDCALL;
    if (lostState_ == D3D_OK && context_->makeCurrent()) {
        glNamedBufferData(scratchBuffer_.get(), GLsizeiptr(count * stride), vertices, GL_STREAM_DRAW);
        if (prepareDraw(scratchBuffer_.get(), stride)) glDrawArrays(primitiveMode(type), 0, GLsizei(count));
    }
    streams_[0] = Stream{};
    return D3D_OK;
}

HRESULT Device::GetRenderTargetData(const std::shared_ptr<Surface>& target, const std::shared_ptr<Surface>& memory)
{
    if (!target || !memory || !target->texture() || memory->texture() ||
        !(target->desc().Usage & D3DUSAGE_RENDERTARGET) || target->desc().Width != memory->desc().Width ||
        target->desc().Height != memory->desc().Height || target->desc().Format != memory->desc().Format)
        return D3DERR_INVALIDCALL;
    if (lostState_ != D3D_OK) return D3DERR_DEVICELOST;
    return target->texture()->download(target->face(), target->level(), memory->systemBytes()) ? D3D_OK
                                                                                               : D3DERR_INVALIDCALL;
}

}  // namespace qx::gpu
