// Box of 2 x 1 x 1 hexahedra on [0,2]x[0,1]x[0,1].
Point(1) = {0, 0, 0}; Point(2) = {2, 0, 0}; Point(3) = {2, 1, 0}; Point(4) = {0, 1, 0};
Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 4}; Line(4) = {4, 1};
Curve Loop(1) = {1, 2, 3, 4}; Plane Surface(1) = {1};
Transfinite Curve{1, 3} = 3; Transfinite Curve{2, 4} = 2;
Transfinite Surface{1}; Recombine Surface{1};
out[] = Extrude {0, 0, 1} { Surface{1}; Layers{1}; Recombine; };
Physical Volume("block") = {out[1]};
Physical Surface("base") = {1};
