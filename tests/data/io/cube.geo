// Unit cube of tetrahedra; physical groups for the volume and two faces.
SetFactory("OpenCASCADE");
Box(1) = {0, 0, 0, 1, 1, 1};
Physical Volume("solid") = {1};
Physical Surface("bottom") = {5};
Physical Surface(7) = {6};
MeshSize{ PointsOf{ Volume{1}; } } = 1;
