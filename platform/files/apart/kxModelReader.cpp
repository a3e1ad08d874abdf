#include <files/apart/kxModelReader.h>

#include <files/assimp/kxAssimpImport.h>
#include <files/gltf/kxGltfImport.h>

bool kxModelReader::read(const Task& task, kxSceneContent& content, kxFileReport& report)
{
    if (task.kind == Gltf)
    {
        bool firstVersion = false;
        kxFileReport own(report.file());
        if (kxGltfImport::read(task.path, content, own, &firstVersion) || !firstVersion)
        {
            report = own;
            return !own.failed();
        }
    }
    return kxAssimpImport::read(task.path, task.frameRate, content, report, task.progress);
}
