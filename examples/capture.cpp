// Opens the first camera of type 13, takes one frame and saves it as capture.jpg.
#include <ZELCam.h>

#include <cstdio>

int main() {
  IZELBuilder* builder = nullptr;
  IZELCamera* camera = nullptr;
  if (FAILED(ZELCreateBuilder(&builder)) || FAILED(builder->CreateCamera(13, &camera))) return 1;

  LONG result = 0;
  if (FAILED(camera->OpenCamera(0, &result))) return std::puts("no camera answers"), 1;
  camera->SetBufferSamples(1);  // frames wait in a queue of two for GetData
  camera->Play(&result);

  VARIANT picture;
  VariantInit(&picture);
  picture.vt = VT_ARRAY | VT_UI1;
  picture.parray = SafeArrayCreateVector(VT_UI1, 0, 1280 * 1024 * 4);
  const HRESULT taken = camera->GetData(picture, &result);
  camera->Stop(&result);

  BSTR name = SysAllocString(u"capture.jpg");
  const HRESULT saved = camera->SaveImage(name, picture, 1280, 1024, 32, 0, 1 /* JPEG */, 0);
  SysFreeString(name);
  VariantClear(&picture);
  camera->Release();
  builder->Release();
  return FAILED(taken) || FAILED(saved);
}
