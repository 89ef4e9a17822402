#!/usr/bin/python3
"""Renders the result of examples/ex02_gmsh_part.cpp offscreen to a PNG.

The quarter ring under internal pressure, deformed by its displacements "U" (magnified),
coloured by the radial displacement, over the outline of the undeformed ring.

Run by hand, from the repository root, with Debian's VTK and, on a machine without a
display, a virtual X server (apt-get install python3-vtk9 xvfb):
    ./build/ex02_gmsh_part examples/data/thick_ring.msh /tmp/thick_ring.vtu
    xvfb-run -a /usr/bin/python3 docs/render_ex02.py /tmp/thick_ring.vtu docs/ex02_thick_ring.png
(/usr/bin/python3: the interpreter Debian's VTK is installed for.)
"""
import sys

import vtk

SCALE = 300.0  # magnification of the displacements
WIDTH, HEIGHT = 800, 600


def surface(source, subdivision=2):
    """The outer surface of the cells, the quadratic faces split so that arcs look round."""
    f = vtk.vtkDataSetSurfaceFilter()
    f.SetInputConnection(source.GetOutputPort())
    f.SetNonlinearSubdivisionLevel(subdivision)
    return f


def line_actor(source, grey, width):
    """An actor drawing the lines of `source` in one shade of grey."""
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputConnection(source.GetOutputPort())
    mapper.ScalarVisibilityOff()
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().SetColor(grey, grey, grey)
    actor.GetProperty().SetLineWidth(width)
    return actor


def main(vtu_path, png_path):
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.SetFileName(vtu_path)
    reader.Update()
    grid = reader.GetOutput()
    if grid.GetNumberOfCells() == 0 or grid.GetPointData().GetArray("U") is None:
        sys.exit(f"{vtu_path}: no cells or no point field U")
    radial = grid.GetPointData().GetArray("radial displacement")
    if radial is None:
        sys.exit(f"{vtu_path}: no point field 'radial displacement'")

    warp = vtk.vtkWarpVector()
    warp.SetInputConnection(reader.GetOutputPort())
    warp.SetInputArrayToProcess(0, 0, 0, vtk.vtkDataObject.FIELD_ASSOCIATION_POINTS, "U")
    warp.SetScaleFactor(SCALE)

    lut = vtk.vtkLookupTable()
    lut.SetHueRange(0.667, 0.0)
    lut.SetNumberOfTableValues(256)
    lut.Build()

    # the pipeline keeps no Python reference to its filters: hold them here
    deformed_surface, deformed_faces, undeformed_surface = surface(warp), surface(warp, 0), surface(reader)
    deformed = vtk.vtkPolyDataMapper()
    deformed.SetInputConnection(deformed_surface.GetOutputPort())
    deformed.SetScalarModeToUsePointFieldData()
    deformed.SelectColorArray("radial displacement")
    deformed.SetScalarRange(radial.GetRange())
    deformed.SetLookupTable(lut)
    # lift the edges drawn on the surface above it
    deformed.SetResolveCoincidentTopologyToPolygonOffset()
    deformed_actor = vtk.vtkActor()
    deformed_actor.SetMapper(deformed)
    deformed_actor.GetProperty().SetAmbient(0.35)
    deformed_actor.GetProperty().SetDiffuse(0.7)

    # the element edges on the deformed surface: the mesh Gmsh made
    edges = vtk.vtkExtractEdges()
    edges.SetInputConnection(deformed_faces.GetOutputPort())
    edges_actor = line_actor(edges, 0.15, 1.0)
    edges_actor.GetProperty().SetOpacity(0.6)

    # the undeformed ring as a feature outline
    outline = vtk.vtkFeatureEdges()
    outline.SetInputConnection(undeformed_surface.GetOutputPort())
    outline.BoundaryEdgesOff()
    outline.ManifoldEdgesOff()
    outline.NonManifoldEdgesOff()
    outline.FeatureEdgesOn()
    outline.SetFeatureAngle(30.0)
    outline_actor = line_actor(outline, 0.0, 1.5)

    bar = vtk.vtkScalarBarActor()
    bar.SetLookupTable(lut)
    bar.SetTitle("u_r")
    bar.SetNumberOfLabels(5)
    bar.UnconstrainedFontSizeOn()
    bar.SetLabelFormat("%.2e")
    bar.SetWidth(0.12)
    bar.SetHeight(0.6)
    bar.SetPosition(0.85, 0.2)
    for p in (bar.GetTitleTextProperty(), bar.GetLabelTextProperty()):
        p.SetColor(0.0, 0.0, 0.0)
        p.SetFontSize(16)
        p.ItalicOff()
        p.ShadowOff()

    title = vtk.vtkTextActor()
    title.SetInput(f"Quarter of a thick ring under internal pressure (tetra10)\n"
                   f"colour: radial displacement u_r; deformed x{SCALE:g};\n"
                   f"black: the ring before loading")
    title.GetTextProperty().SetFontSize(18)
    title.GetTextProperty().SetColor(0.0, 0.0, 0.0)
    title.SetDisplayPosition(15, HEIGHT - 85)

    renderer = vtk.vtkRenderer()
    renderer.SetBackground(1.0, 1.0, 1.0)
    for actor in (deformed_actor, edges_actor, outline_actor):
        renderer.AddActor(actor)
    renderer.AddViewProp(bar)
    renderer.AddViewProp(title)
    camera = renderer.GetActiveCamera()
    camera.SetFocalPoint(10.0, 10.0, 1.0)
    camera.SetPosition(40.0, -35.0, 28.0)
    camera.SetViewUp(0.0, 0.0, 1.0)
    renderer.ResetCamera()
    camera.Zoom(1.2)

    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetSize(WIDTH, HEIGHT)
    window.AddRenderer(renderer)
    window.Render()

    shot = vtk.vtkWindowToImageFilter()
    shot.SetInput(window)
    shot.ReadFrontBufferOff()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(png_path)
    writer.SetInputConnection(shot.GetOutputPort())
    writer.Write()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: render_ex02.py <thick_ring.vtu> <picture.png>")
    main(sys.argv[1], sys.argv[2])
