' Lists the cameras that answer, opens the first one, captures five frames and saves the last one as a picture.
'
'   cscript //nologo capture.vbs [picture.jpg]
'
' The library must be registered (regsvr32 ZELCam.DLL). Without a camera at hand, set ZELCAM_SIM=13 before: a
' simulated one takes its place.
Option Explicit

Const Queue = 1    ' delivery mode: two frames wait for GetData
Const Jpeg = 1     ' file format of SaveImage
Const Drives = 6   ' the indexes of the USB 3.0 disk cameras, which no others have

Dim builder : Set builder = CreateObject("ZELCam.ZELBuilder")

' A camera of a type, not opened yet; Nothing when the library does not know the type.
Function NewCamera(cameraType)
  Dim made : Set made = Nothing
  On Error Resume Next
  builder.CreateCamera cameraType, made
  Set NewCamera = made
End Function

Function Answers(camera, cameraType, index)
  Dim valid : valid = False
  On Error Resume Next
  valid = (camera.IsCameraValid(index) = 0)
  ' To the USB 3.0 disk types any disk looks like a camera; the catalogue asks the disk which one it is.
  If valid And camera.GetMaxCameraNum() = Drives Then valid = (builder.GetUsb3CameraType(index) = cameraType)
  Answers = valid
End Function

Dim first : Set first = Nothing
Dim firstIndex, cameraType, candidate, index, name
For cameraType = 0 To builder.GetCameraTypeNum() - 1
  Set candidate = NewCamera(cameraType)
  If Not candidate Is Nothing Then
    For index = 0 To candidate.GetMaxCameraNum() - 1
      If Answers(candidate, cameraType, index) Then
        builder.GetCameraName cameraType, name
        WScript.Echo "type " & cameraType & ", index " & index & ": " & name
        If first Is Nothing Then
          Set first = candidate
          firstIndex = index
        End If
      End If
    Next
  End If
Next
If first Is Nothing Then
  WScript.Echo "no camera answers"
  WScript.Quit 1
End If

Dim camera : Set camera = first
camera.OpenCamera firstIndex
Dim settings : Set settings = camera.GetProperty()
Dim x, y, width, height
settings.GetROI x, y, width, height
WScript.Echo "picture: " & width & " x " & height & ", shutter " & settings.GetShutter()

camera.SetBufferSamples Queue
camera.Play
Dim n, frame
For n = 1 To 5
  camera.GetData frame              ' the first call makes the array, the others fill it again
Next
camera.Stop

Dim file : file = "capture.jpg"
If WScript.Arguments.Count > 0 Then file = WScript.Arguments(0)
camera.SaveImage file, frame, width, height, 32, 0, Jpeg, 0
WScript.Echo "saved: " & file
