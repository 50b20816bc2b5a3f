#include "common.fxh"
// technique in a comment { pass
technique t { pass p { SrcBlend = ; DestBlend = INVSRCALPHA
