#pragma once
// The shader generator's tests: a file manager whose "common.fxh" is one line, so a
// generated text is that line and then the generator's own lines.
#include "qx4d/content/ShaderWriter.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/content/MaterialTestSupport.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

namespace qx4d::test {

class ShaderWriterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder.Write("Effects/common.fxh", "// head\n");
        ASSERT_TRUE(files.Mount(u"EFFECTS", (folder.path / "Effects").u16string()));
    }
    std::string Generated(const Material& material, const std::vector<gpu::D3DVERTEXELEMENT9>& declaration,
                          int32_t fogType = 0)
    {
        std::string text;
        EXPECT_TRUE(Generate(material, declaration, fogType, text));
        return text;
    }

    TempFolder folder;
    FileManager files;
};

}  // namespace qx4d::test
