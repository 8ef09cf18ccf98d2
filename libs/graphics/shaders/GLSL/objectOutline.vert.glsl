#version 330 compatibility
// Object outline, vertex stage: the drawable's own transform, nothing else, so the outline lies
// exactly on the geometry drawn by the standard program.

void main()
{
    gl_Position = ftransform();
}
