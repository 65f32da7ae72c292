#!/usr/bin/python3
"""Renders a block exported with VTK_FILE as a PNG picture, coloured by facies
family, with VTK's own Python; needs a display, or a virtual one:

    xvfb-run -a /usr/bin/python3 scripts/render-block.py output/default.vti picture.png

Void cells are left out; elevations are exaggerated (--exaggeration, 20 by
default) since a block is far wider than it is thick."""

import argparse

import vtk

# Colours of the facies families (0 basement, then 1 to 13), as in the program's colour map.
COLOURS = [
    (0.35, 0.25, 0.2),
    (1.0, 0.5, 0.0),
    (1.0, 1.0, 0.0),
    (0.75, 0.75, 0.55),
    (0.8, 0.5, 0.2),
    (0.8, 1.0, 0.2),
    (0.8, 0.8, 0.2),
    (0.4, 0.8, 0.2),
    (0.0, 1.0, 0.0),
    (0.0, 0.8, 0.5),
    (0.5, 0.5, 0.5),
    (0.85, 0.45, 0.85),
    (0.6, 0.8, 0.9),
    (1.0, 0.8, 1.0),
]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("block", help="a .vti or .vts file written by VTK_FILE")
    parser.add_argument("picture", help="the PNG file to write")
    parser.add_argument("--exaggeration", type=float, default=20.0)
    parser.add_argument("--size", type=int, nargs=2, default=(1200, 800))
    args = parser.parse_args()

    reader = vtk.vtkXMLImageDataReader() if args.block.endswith(".vti") else vtk.vtkXMLStructuredGridReader()
    reader.SetFileName(args.block)
    reader.Update()
    data = reader.GetOutput()
    data.GetCellData().RemoveArray("vtkGhostType")
    data.GetCellData().SetActiveScalars("Facies")

    deposits = vtk.vtkThreshold()
    deposits.SetInputData(data)
    deposits.SetInputArrayToProcess(0, 0, 0, vtk.vtkDataObject.FIELD_ASSOCIATION_CELLS, "Facies")
    deposits.SetLowerThreshold(0)
    deposits.SetUpperThreshold(len(COLOURS) - 1)
    surface = vtk.vtkDataSetSurfaceFilter()
    surface.SetInputConnection(deposits.GetOutputPort())

    table = vtk.vtkLookupTable()
    table.SetNumberOfTableValues(len(COLOURS))
    table.SetTableRange(0, len(COLOURS) - 1)
    for family, (r, g, b) in enumerate(COLOURS):
        table.SetTableValue(family, r, g, b, 1.0)
    table.Build()
    mapper = vtk.vtkDataSetMapper()
    mapper.SetInputConnection(surface.GetOutputPort())
    mapper.SetLookupTable(table)
    mapper.SetScalarModeToUseCellData()
    # Bytes would be taken as colours themselves.
    mapper.SetColorModeToMapScalars()
    mapper.SetScalarRange(0, len(COLOURS) - 1)
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.SetScale(1.0, 1.0, args.exaggeration)

    renderer = vtk.vtkRenderer()
    renderer.AddActor(actor)
    renderer.SetBackground(1.0, 1.0, 1.0)
    camera = renderer.GetActiveCamera()
    camera.SetViewUp(0, 0, 1)
    camera.SetPosition(-1, -1.6, 0.9)
    camera.SetFocalPoint(0, 0, 0)
    renderer.ResetCamera()
    camera.Zoom(1.3)
    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.AddRenderer(renderer)
    window.SetSize(*args.size)
    window.Render()
    image = vtk.vtkWindowToImageFilter()
    image.SetInput(window)
    image.Update()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(args.picture)
    writer.SetInputConnection(image.GetOutputPort())
    writer.Write()


if __name__ == "__main__":
    main()
