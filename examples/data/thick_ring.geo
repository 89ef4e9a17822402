// A quarter of a thick ring, extruded along z: the bore of radius a, the outer
// surface of radius b, the height h. Quadratic tetrahedra (tetra10) with their
// mid-side nodes on the arcs. Physical groups name what the solver needs: the
// volume, the bore that carries the pressure, the two symmetry planes and the two
// end planes that hold the axial displacement.
//
// Make the mesh (MSH 4.1, ASCII) from this folder:
//   gmsh -3 -order 2 -format msh41 thick_ring.geo -o thick_ring.msh
a = 10;
b = 20;
h = 2;
lc = 2.5;

Point(1) = {0, 0, 0, lc};
Point(2) = {a, 0, 0, lc};
Point(3) = {b, 0, 0, lc};
Point(4) = {0, b, 0, lc};
Point(5) = {0, a, 0, lc};

Line(1) = {2, 3};
Circle(2) = {3, 1, 4};
Line(3) = {4, 5};
Circle(4) = {5, 1, 2};
Curve Loop(1) = {1, 2, 3, 4};
Plane Surface(1) = {1};

// out[0]: the top face, out[1]: the volume, out[2..5]: the faces swept by lines 1-4
out[] = Extrude {0, 0, h} { Surface{1}; };

Physical Volume("ring") = {out[1]};
Physical Surface("bore") = {out[5]};
Physical Surface("outer") = {out[3]};
Physical Surface("sym_y") = {out[2]};
Physical Surface("sym_x") = {out[4]};
Physical Surface("ends") = {1, out[0]};

Mesh.ElementOrder = 2;
Mesh.SecondOrderLinear = 0;
