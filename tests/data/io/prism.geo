// Right triangle (0,0) (1,0) (0,1) extruded by 1 in two layers of wedges.
Point(1) = {0, 0, 0}; Point(2) = {1, 0, 0}; Point(3) = {0, 1, 0};
Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 1};
Curve Loop(1) = {1, 2, 3}; Plane Surface(1) = {1};
Transfinite Curve{1, 2, 3} = 2; Transfinite Surface{1};
out[] = Extrude {0, 0, 1} { Surface{1}; Layers{2}; Recombine; };
Physical Volume("wedges") = {out[1]};
