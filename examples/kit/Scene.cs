// Builds a complete scene and writes it, by the package Velmar: a box of two materials on the ground, in sunlight, seen by a
// camera.
//
// Usage: Scene.exe [SCENE.xml]
using System;
using Velmar;

internal static class Program
{
    // The corners of a box of 2 x 2 x 2 metres on the ground.
    private static readonly float[] Corners = {
        -1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, // below
        -1, -1, 2, 1, -1, 2, 1, 1, 2, -1, 1, 2, // above
    };
    // All sides use the same square of texture coordinates.
    private static readonly float[] TextureCoordinates = { 0, 0, 1, 0, 1, 1, 0, 1 };
    // The bottom, and around.
    private static readonly uint[] Walls = { 0, 3, 2, 1, 0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 6, 3, 0, 4, 7 };
    private static readonly uint[] Squares = { 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3 };
    // The top, of two triangles.
    private static readonly uint[] Lid = { 4, 5, 6, 4, 6, 7 };
    private static readonly uint[] Halves = { 0, 1, 2, 0, 2, 3 };

    private static Mesh MakeBox()
    {
        Mesh box = new Mesh("Box");
        box.AddMaterialName("Walls");
        box.AddMaterialName("Lid");
        box.AddVertices(Corners);
        box.SetTextureCoordinates(TextureCoordinates);
        box.AddQuads(Walls, 0, Squares);
        box.AddTriangles(Lid, 1, Halves);
        box.Build();
        return box;
    }

    private static void WriteScene(string path)
    {
        using (Scene scene = new Scene())
        {
            scene.Add(new RenderSettings(800, 600) { HaltSamplesPerPixel = 200 });
            scene.Add(new Camera
            {
                Position = new Vec3(0, -8, 2), Forwards = new Vec3(0, 1, -0.125), Up = new Vec3(0, 0, 1),
                // As far from the lens as the sensor is wide: a field of view of 53 degrees.
                SensorWidth = 0.036, LensSensorDistance = 0.036, FocusDistance = 8,
            });
            scene.Add(new Tonemapping(TonemappingKind.Reinhard) { Burn = 10 });
            scene.Add(Background.SunSky(new Vec3(-1, -1, 1)));
            Material brick = scene.Add(new Material("Walls", new Vec3(0.6, 0.2, 0.1)));
            Material paint = scene.Add(new Material("Lid", new Vec3(0.8, 0.8, 0.7)));
            Mesh box = scene.Add(MakeBox());
            Model model = scene.Add(new Model("Box", box, brick, paint));
            // A rotation by 90 degrees around z, row by row.
            model.Place(new Vec3(0.5, 0, 0), new float[] { 0, -1, 0, 1, 0, 0, 0, 0, 1 });
            scene.AddGroundPlane(0, 100);
            scene.Write(path);
        }
    }

    private static int Main(string[] arguments)
    {
        string path = arguments.Length > 0 ? arguments[0] : "scene.xml";
        try
        {
            WriteScene(path);
        }
        catch (VelmarException exception)
        {
            Console.Error.WriteLine(exception.Message);
            return 1;
        }
        Console.WriteLine(path);
        return 0;
    }
}
